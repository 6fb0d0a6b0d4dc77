// The code that a call returns when the body does not hold the response element.
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <QtCore/QThread>
#include <gtest/gtest.h>

#include <memory>

namespace {

// How servers write a fault: the envelope's prefix, a declaration, the fault; CODE is its code.
const char* const spellings = R"(
SOAP-ENV: | | <SOAP-ENV:Fault><SOAP-ENV:Code><SOAP-ENV:Value>SOAP-ENV:CODE</SOAP-ENV:Value></SOAP-ENV:Code></SOAP-ENV:Fault>
soap: | | <soap:Fault><soap:Code><soap:Value>soap:CODE</soap:Value></soap:Code><soap:Reason/></soap:Fault>
env: | | <env:Fault><env:Reason/><env:Code><env:Value>env:CODE</env:Value></env:Code></env:Fault>
 | | <Fault><Code><Value>CODE</Value></Code><Reason><Text xml:lang="en">no</Text></Reason></Fault>
a: | xmlns:b="http://www.w3.org/2003/05/soap-envelope" | <b:Fault><a:Code><b:Value> b:CODE </b:Value></a:Code></b:Fault>
SOAP-ENV: | | <SOAP-ENV:Fault><faultcode>SOAP-ENV:CODE</faultcode><faultstring>no</faultstring></SOAP-ENV:Fault>
soap: | | <soap:Fault><soap:Reason><soap:Text>no</soap:Text><soap:Text>nej</soap:Text></soap:Reason><soap:Code><soap:Value>soap:CODE</soap:Value></soap:Code></soap:Fault>
soap: | | <soap:Fault><soap:Code><soap:Value>soap:CODE</soap:Value></soap:Code><soap:Detail>t]]<![CDATA[]]]]><y a="/>" b='"/>'>a/>b<y/><z>/></z></y><y><![CDATA[</y>/>]]><!-- </y> /> --><?p </y> a?b > />?></y>&lt;<?p a?b > <?></soap:Detail></soap:Fault>
soap: | | <soap:Fault><detail><x>y</x></detail><faultcode>soap:CODE</faultcode></soap:Fault>
)";
const std::pair<const char*, int> codes[] = {{"Receiver", 2},  {"Server", 2},         {"Sender", 1},
                                             {"Client", 1},    {"MustUnderstand", 8}, {"VersionMismatch", 39},
                                             {"receiver", 12}, {"ReceiverX", 12},     {"DataEncodingUnknown", 12}};

TEST(Fault, CodeDecidesTheResult) {
  forEachArrival(spellings, [](WireClient& client, const auto& row) {
    for (const auto& [code, result] : codes)
      for (const int status : {200, 400, 500}) {
        const std::string& p = row[0];
        const std::string declared = p.empty() ? "xmlns" : "xmlns:" + p.substr(0, p.size() - 1);
        std::string body = "<" + p + "Envelope " + declared + "=\"" + message::envelopeNamespace + "\" " + row[1] +
                           "><" + p + "Body>" + row[2] + "</" + p + "Body></" + p + "Envelope>";
        body = replaced(body, "CODE", code);
        EXPECT_EQ("error " + std::to_string(result), client.login(body, status)) << "HTTP " << status << " " << body;
      }
  });
}

// Bodies of another kind, and the result.
const char* const bodies = R"(
<soap:Fault><soap:Code><soap:Value xmlns:f="urn:other">f:Receiver</soap:Value></soap:Code></soap:Fault>   | error 12
<soap:Fault xmlns=""><soap:Code><soap:Value>Receiver</soap:Value></soap:Code></soap:Fault>                | error 12
<soap:Fault><soap:Reason/></soap:Fault>                                                                   | error 12
                                                                                                          | error 6
<!-- nothing -->                                                                                          | error 6
<LoginResponse><soap:Fault><soap:Code><soap:Value>soap:Receiver</soap:Value></soap:Code></soap:Fault></LoginResponse> | error 3
<d:Fault><d:Code><d:Value>soap:Receiver</d:Value></d:Code></d:Fault>                                      | error 3
)";
TEST(Fault, BodyWithoutTheAnswer) {
  WireClient client;
  for (const auto& row : rows(bodies))
    for (const int status : {200, 400, 500})
      EXPECT_EQ(row[1], client.login(message::envelope(row[0]), status)) << "HTTP " << status << " " << row[0];
  client.login(message::envelope(""));
  EXPECT_STREQ("SOAP-ENV:Sender", *soap_faultcode(client.soap)) << "recorded when no fault was read";
}

TEST(Fault, HttpStatusOfSuccessIsNoError) {
  const char* const noEnvelopes = "| error -1\n<?xml | error -1\nhello | error 6\n<a/> | error 3";
  forEachArrival(noEnvelopes, [](WireClient& client, const auto& row) {
    for (const Reply& answer : {reply(200, row[0]), reply(202, row[0]), chunks(2, 200, row[0])}) {
      client.reply = answer.bytes;
      EXPECT_EQ(row[1], client.login()) << client.reply;
    }
  });
}

// Parts of a fault, and their values in the context: code, subcode, reason, and the literal XML of the detail.
const char* const faults = R"(
<Reason><Text xml:lang="en">too much</Text></Reason><Code><Subcode><Value>d:Quota</Value></Subcode><Value>soap:Sender</Value></Code> | SOAP-ENV:Sender dsns:Quota too much -
<Code><Value>soap:Sender</Value></Code><Detail>full &amp; <b>more</b></Detail> | SOAP-ENV:Sender - - full &amp; <b>more</b>
<Detail><b>1</b><c>2</c></Detail> | - - - <b>1</b>
<Detail><b a="&quot;&amp;é"><![CDATA[/>]]><c/>&gt;</b></Detail> | - - - <b a="&quot;&amp;é"><![CDATA[/>]]><c/>&gt;</b>
<Detail><![CDATA[<]]>"<b/></Detail> | - - - &lt;"<b/>
<Detail>'&amp;<b/></Detail> | - - - '&amp;<b/>
<Detail><!-- nothing --></Detail> | - - - -
)";
TEST(Fault, StaysInTheContext) {
  forEachArrival(faults, [](WireClient& client, const auto& row) {
    std::string parts = row[0];
    for (const std::string name : {"Reason", "Text", "Code", "Subcode", "Value", "Detail"})
      parts = replaced(replaced(parts, "<" + name, "<soap:" + name), "</" + name, "</soap:" + name);
    client.login(message::envelope(element("soap:Fault", parts)));
    const auto text = [](const char* part) { return std::string(part ? part : "-") + " "; };
    struct soap* const soap = client.soap;
    EXPECT_EQ(row[1] + " ", text(*soap_faultcode(soap)) + text(*soap_faultsubcode(soap)) +
                                text(*soap_faultstring(soap)) + text(soap_fault_detail(soap)));
    EXPECT_EQ(row[0].find("<Detail>") == std::string::npos, !soap->fault->SOAP_ENV__Detail) << "asking makes none";
    soap->lang = "en";
    const std::string sent =
        client.written([](auto* s) { return soap_out_SOAP_ENV__Fault(s, "SOAP-ENV:Fault", -1, s->fault, nullptr); });
    EXPECT_EQ(row[0].find("<Reason>") == std::string::npos, sent.find("<SOAP-ENV:Reason></") != std::string::npos)
        << sent;
    EXPECT_EQ("login 2", client.login(message::answer("Login", message::loginValue("Success"))));
  });
}

std::string nested(const std::string& element, const std::string& first, int depth) {
  const std::string levels(static_cast<std::size_t>(depth), '.');
  return replaced(levels, ".", "<" + element + ">" + first) + replaced(levels, ".", "</" + element + ">");
}
TEST(Fault, DeepNestingNeedsNoDeepStack) {
  const std::string begin = "<soap:Fault><soap:Code><soap:Value>soap:Receiver</soap:Value>",
                    value = "<soap:Value>d:a</soap:Value>", end = "</soap:Code></soap:Fault>";
  const std::pair<std::string, std::string> deep[] = {
      {begin + nested("soap:Subcode", value, 5000) + end, "error 2"},
      {begin + nested("soap:Subcode", value, 100000) + end, "error "},
      {begin + "</soap:Code><soap:Detail>" + nested("x", "", 100000) + "</soap:Detail></soap:Fault>", "error "},
      {nested("LoginResponse", "", 100000), "no login"}};
  const std::unique_ptr<QThread> thread(QThread::create([&deep] {
    for (const auto& [body, read] : deep)
      EXPECT_EQ(read, WireClient().login(message::envelope(body)).substr(0, read.size()));
  }));
  thread->setStackSize(256 << 10); // as small as in worker threads of some hosts
  thread->start();
  thread->wait();
}

} // namespace
