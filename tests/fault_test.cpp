// Which code a call returns when the body holds something else than the answer.
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <QtCore/QThread>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace {

// How servers write a fault: the envelope's prefix, a declaration, the fault; "%" is the code.
const char* const spellings = R"(
SOAP-ENV: | | <SOAP-ENV:Fault><SOAP-ENV:Code><SOAP-ENV:Value>SOAP-ENV:%</SOAP-ENV:Value></SOAP-ENV:Code></SOAP-ENV:Fault>
soap:     | | <soap:Fault><soap:Code><soap:Value>soap:%</soap:Value></soap:Code><soap:Reason/></soap:Fault>
env:      | | <env:Fault><env:Reason/><env:Code><env:Value>env:%</env:Value></env:Code></env:Fault>
          | | <Fault><Code><Value>%</Value></Code><Reason><Text xml:lang="en">no</Text></Reason></Fault>
a: | xmlns:b="http://www.w3.org/2003/05/soap-envelope" | <b:Fault><a:Code><b:Value> b:% </b:Value></a:Code></b:Fault>
SOAP-ENV: | | <SOAP-ENV:Fault><faultcode>SOAP-ENV:%</faultcode><faultstring>no</faultstring></SOAP-ENV:Fault>
soap: | | <soap:Fault><soap:Reason><soap:Text>no</soap:Text><soap:Text>nej</soap:Text></soap:Reason><soap:Code><soap:Value>soap:%</soap:Value></soap:Code></soap:Fault>
soap:     | | <soap:Fault><detail><x>y</x></detail><faultcode>soap:%</faultcode></soap:Fault>
)";
const std::pair<const char*, int> codes[] = {{"Receiver", 2},  {"Server", 2},         {"Sender", 1},
                                             {"Client", 1},    {"MustUnderstand", 8}, {"VersionMismatch", 39},
                                             {"receiver", 12}, {"ReceiverX", 12},     {"DataEncodingUnknown", 12}};

TEST(Fault, CodeDecidesTheResult) {
  WireClient client;
  for (const auto& row : rows(spellings))
    for (const auto& [code, result] : codes)
      for (const int status : {200, 400, 500}) {
        const std::string& p = row[0];
        const std::string declared = p.empty() ? "xmlns" : "xmlns:" + p.substr(0, p.size() - 1);
        std::string body = "<" + p + "Envelope " + declared + "=\"" + message::envelopeNamespace + "\" " + row[1] +
                           "><" + p + "Body>" + row[2] + "</" + p + "Body></" + p + "Envelope>";
        body.replace(body.find('%'), 1, code);
        EXPECT_EQ("error " + std::to_string(result), client.login(body, status)) << "HTTP " << status << " " << body;
      }
}

// Bodies of another kind, and the result.
const char* const bodies = R"(
<soap:Fault><soap:Code><soap:Value xmlns:f="urn:other">f:Receiver</soap:Value></soap:Code></soap:Fault>   | error 12
<soap:Fault xmlns=""><soap:Code><soap:Value>Receiver</soap:Value></soap:Code></soap:Fault>                | error 12
<soap:Fault><soap:Reason/></soap:Fault>                                                                   | error 12
<soap:Fault/>                                                                                             | error 12
                                                                                                          | error 6
<!-- nothing -->                                                                                          | error 6
<LoginResponse><soap:Fault><soap:Code><soap:Value>soap:Receiver</soap:Value></soap:Code></soap:Fault></LoginResponse> | error 3
<LogoutResponse/>                                                                                         | error 3
<x:LoginResponse/>                                                                                        | error 3
<loginResponse/>                                                                                          | error 3
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

TEST(Fault, StaysInTheContext) {
  WireClient client;
  EXPECT_EQ("error 1",
            client.login(message::envelope("<soap:Fault><soap:Detail><d:limit>3</d:limit></soap:Detail>"
                                           "<soap:Reason><soap:Text xml:lang=\"en\">too much</soap:Text></soap:Reason>"
                                           "<soap:Code><soap:Subcode><soap:Value>d:Quota</soap:Value></soap:Subcode>"
                                           "<soap:Value>soap:Sender</soap:Value></soap:Code></soap:Fault>")));
  const SOAP_ENV__Fault* fault = client.soap->fault;
  ASSERT_TRUE(fault && fault->SOAP_ENV__Code && fault->SOAP_ENV__Code->SOAP_ENV__Subcode);
  ASSERT_TRUE(fault->SOAP_ENV__Reason && fault->SOAP_ENV__Detail && fault->SOAP_ENV__Detail->__any);
  EXPECT_STREQ("SOAP-ENV:Sender", fault->SOAP_ENV__Code->SOAP_ENV__Value);
  EXPECT_STREQ("dsns:Quota", fault->SOAP_ENV__Code->SOAP_ENV__Subcode->SOAP_ENV__Value);
  EXPECT_STREQ("too much", fault->SOAP_ENV__Reason->SOAP_ENV__Text);
  EXPECT_NE(nullptr, std::strstr(fault->SOAP_ENV__Detail->__any, ">3</"));
  EXPECT_EQ("login 2", client.login(message::answer("Login", message::loginValue("Success"))));
}

// The content of a detail, and the literal XML that is kept of it.
const char* const details = R"(
 full &amp; <b>more</b> | full &amp; <b>more</b>
 <b>1</b><c>2</c>       | <b>1</b>
 <!-- nothing -->       | -
)";
TEST(Fault, DetailIsKeptAsItIs) {
  forEachArrival(details, [](WireClient& client, const auto& row) {
    client.login(message::envelope("<soap:Fault><soap:Detail>" + row[0] + "</soap:Detail></soap:Fault>"));
    const char* const kept = soap_fault_detail(client.soap);
    EXPECT_EQ(row[1], kept ? kept : "-") << row[0];
  });
}

TEST(Fault, IsWrittenAsItWasMade) {
  WireClient client;
  char code[] = "\"urn:bad\":Quota";
  client.soap->version = 2;
  client.soap->lang = "en";
  *soap_faultsubcode(client.soap) = code;
  EXPECT_EQ(nullptr, soap_fault_detail(client.soap)) << "asking makes none";
  EXPECT_EQ(nullptr, client.soap->fault->SOAP_ENV__Detail);
  const SOAP_ENV__Fault& fault = *client.soap->fault;
  const std::string sent = client.written(
      [&](struct soap* soap) { return soap_out_SOAP_ENV__Fault(soap, "SOAP-ENV:Fault", -1, &fault, nullptr); });
  EXPECT_NE(std::string::npos, sent.find("<SOAP-ENV:Subcode><SOAP-ENV:Value xmlns:")) << sent;
  EXPECT_NE(std::string::npos, sent.find("<SOAP-ENV:Reason></SOAP-ENV:Reason>")) << sent;
}

/// What a login reads on a thread with a stack as small as a host's worker threads may have.
std::string loginOnSmallStack(const std::string& body) {
  std::string read;
  const std::unique_ptr<QThread> thread(QThread::create([&] { read = WireClient().login(body); }));
  thread->setStackSize(256 << 10);
  thread->start();
  thread->wait();
  return read;
}
std::string nested(const std::string& element, const std::string& first, int depth) {
  const std::string levels(static_cast<std::size_t>(depth), '.');
  return replaced(levels, ".", "<" + element + ">" + first) + replaced(levels, ".", "</" + element + ">");
}
TEST(Fault, DeepNestingNeedsNoDeepStack) {
  const std::string begin = "<soap:Fault><soap:Code><soap:Value>soap:Receiver</soap:Value>",
                    value = "<soap:Value>d:a</soap:Value>";
  const auto subcodes = [&](int depth) {
    return begin + nested("soap:Subcode", value, depth) + "</soap:Code></soap:Fault>";
  };
  const std::string detail =
      begin + "</soap:Code><soap:Detail>" + nested("x", "", 100000) + "</soap:Detail></soap:Fault>";
  EXPECT_EQ("error 2", loginOnSmallStack(message::envelope(subcodes(5000))));
  EXPECT_EQ("error ", loginOnSmallStack(message::envelope(subcodes(100000))).substr(0, 6));
  EXPECT_EQ("error ", loginOnSmallStack(message::envelope(detail)).substr(0, 6));
  EXPECT_EQ("no login", loginOnSmallStack(message::envelope(nested("LoginResponse", "", 100000))));
}

} // namespace
