// Records: elements that are read, skipped, refused or given by reference; elements that are not written; attachments.
// Every row arrives whole and byte by byte.
#include "tests/Table.h"
#include "tests/WireClient.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

std::string answer(const std::string& result) { return message::answer("GetMapContent_NEW_DESKTOP", result); }
std::string mapAnswer(const std::string& children) { return answer("<DesktopInfo>" + children + "</DesktopInfo>"); }

// Children of the map in an answer, and the values that are read.
const char* const records = R"(
<MapName xmlns="urn:x">no</MapName><y xmlns="urn:x"><Author/></y><MapName xmlns="SERVICE">n</MapName> | {MapName='n'}
<MapName xmlns="urn:x" xmlns:p="SERVICE">no</MapName><p:MapName xmlns="urn:x" xmlns:p="SERVICE">n</p:MapName> | {MapName='n'}
<MapName xmlns="http://www.w3.org/2001/XMLSchema">no</MapName><Author>a</Author>                 | {Author='a'}
<y soap:mustUnderstand="true"/>                                                                  | error 8
<y soap:mustUnderstand="1"/>                                                                     | error 8
<soap:Node/><MapName>n</MapName>                                                                 | error 3
<Version xsi:type="x:decimal">2</Version><IsPublished xsi:type="x:boolean">1</IsPublished> | {IsPublished=1 Version=2}
<Version xsi:type="x:boolean">2</Version> | error 4
<IsPublished xsi:type="d:boolean">1</IsPublished>                                                | {IsPublished=1}
<Thumbnail><y>x</y></Thumbnail><Version/> | {Thumbnail=0:}
<Thumbnail>QUJD<a/>QUJD</Thumbnail>                                                              | error 4
<MapName>n</MapName x><Author>a</Author>                                                         | error 5
<Thumbnail xsi:type="enc:base64">QUJD</Thumbnail>                                                | {Thumbnail=3:ABC}
<Thumbnail xsi:type="x:hexBinary">QUJD</Thumbnail>                                               | error 4
<Thumbnail xsi:type="x:base64Binary:base64">QUJD</Thumbnail>                                     | error 4
)";
TEST(Reading, TakesAndSkipsElements) {
  forEachArrival(records, [](WireClient& client, const auto& row) {
    EXPECT_EQ(row[1][0] == '{' ? "0 no login " + row[1] : row[1],
              client.content(mapAnswer(replaced(row[0], "SERVICE", TARNWELL_SERVICE_NAMESPACE))))
        << row[0];
  });
}

// Elements given by reference: "id" and "href" or "ref" in both orders, and references that lead nowhere.

/// The answer whose list holds `entries`; `after` follows the response element in the body. <map> is the entries'
/// element, SAMPLE stands for two children.
std::string listAnswer(const std::string& entries, const std::string& after) {
  const std::string result = message::response("GetMapsList_NEW_DESKTOP", message::listing(entries)) + after;
  const std::string maps = replaced(replaced(result, "<map", "<DesktopInfoClass"), "</map>", "</DesktopInfoClass>");
  return message::envelope(replaced(maps, "SAMPLE", "<MapName>n</MapName><Version>2</Version>"));
}
std::string expanded(const std::string& read) { return replaced(read, "SAMPLE", "{MapName='n' Version=2}"); }

// Entries of the list, what follows the response element, the entries as read or an error. Where a text is referred to,
// whatever has the id is read as text.
const char* const references = R"(
<map href="#a"/><map>SAMPLE</map> | <map id="a"><MapName>o</MapName></map> | {MapName='o'} SAMPLE
<map ref="a"/><map enc:ref="b"/> | <map id="a">SAMPLE</map><map enc:id="b">SAMPLE</map> | SAMPLE SAMPLE
<map href="#a"/> | <m id="a" xsi:type="d:DesktopInfoClass">SAMPLE</m> | SAMPLE
<m id="a" xsi:type="d:DesktopInfoClass">SAMPLE</m><map href="#a"/> | | SAMPLE
<map><MapName id="t">n</MapName><Author href="#t"/></map> | | {MapName='n' Author='n'}
<map><Thumbnail href="#b"/><Preview href="#b"/></map> | <x:base64Binary id="b">QUJD</x:base64Binary> | {Thumbnail=3:ABC Preview=3:ABC}
<map/><Other/> | | {}
<map href="#none"/> | | error 25
<map><MapName href="#none"/></map> | | error 25
<map><IsPublished href="#none"/></map> | | error 25
<map><Thumbnail href="cid:none"/></map> | | error 33
<map href="#a"/><map><MapName id="a">n</MapName></map> | | error 26
<map><MapName id="a">n</MapName></map><map href="#a"/> | | error 26
<map><Version href="#a"/></map> | <map id="a">SAMPLE</map> | error 4
<map><MapName href="#a"/></map> | <map id="a">m</map> | {MapName='m'}
<map id="a" href="#a"/> | | error 25
<map id="a" href="#b"/><map id="b" href="#a"/> | | error 25
<map href="#a"/> | <map id="a" href="#b"/><map id="b" href="#a"/> | error 25
<map id="a">SAMPLE</map><map id="a"><MapName>o</MapName></map><map href="#a"/> | | error 24
<map href=""/><map href="#"/> | | error 25
)";
TEST(Reference, IsResolvedOrRefused) {
  forEachArrival(references, [](WireClient& client, const auto& row) {
    EXPECT_EQ(row[2].find("error") == 0 ? row[2] : "login 2 " + expanded(row[2]) + " end",
              client.list(listAnswer(row[0], row[1])))
        << row[0] << row[1];
    EXPECT_EQ(expanded("login 2 SAMPLE end"), client.list(listAnswer("<map>SAMPLE</map>", ""))) << "after " << row[0];
  });
}

// The result in an answer and what strict mode reads; REQUIRED stands for the required children of the map, VALUES for
// these without the identifier.
const char* const strictResults = R"(
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo>REQUIRED</DesktopInfo> | 6 no login {MapId=i LastModified=1 Version=1}
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo><MapId/></DesktopInfo> | error 44
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo>VALUES</DesktopInfo> | error 44
<DesktopInfo>REQUIRED</DesktopInfo> | error 44
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo>REQUIRED<Path/></DesktopInfo> | error 3
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo>REQUIREDREQUIRED</DesktopInfo> | error 3
<DesktopMapAccess>6</DesktopMapAccess><DesktopInfo xsi:nil="true"/> | 6 no login null
<DesktopMapAccess xsi:nil="true"/> | error 23
<DesktopMapAccess></DesktopMapAccess> | error 52
<DesktopMapAccess>7</DesktopMapAccess> | error 4
)";
TEST(Reading, StrictMode) {
  for (const auto& row : rows(strictResults)) {
    const std::string values =
        "<LastModified>1970-01-01T00:00:01Z</LastModified><Created>1970-01-01T00:00:00Z"
        "</Created><IsPublished>0</IsPublished><AllowInclusion>0</AllowInclusion><Version>1</Version>"
        "<Format_IsTwlx>0</Format_IsTwlx>";
    WireClient client;
    soap_set_imode(client.soap, SOAP_XML_STRICT);
    EXPECT_EQ(row[1], client.content(
                          answer(replaced(replaced(row[0], "REQUIRED", "<MapId>i</MapId>VALUES"), "VALUES", values))))
        << row[0];
    const std::string after = "<DesktopInfoClass id=\"m\"><MapId>i</MapId>" + values + "</DesktopInfoClass>",
                      response = message::response("GetMapContent_NEW_DESKTOP", "<DesktopMapAccess>6</DesktopMapAccess>"
                                                                                "<DesktopInfo href=\"#m\"/>");
    EXPECT_EQ("6 no login {MapId=i LastModified=1 Version=1}", client.content(message::envelope(response + after)));
    EXPECT_EQ("error 3", client.content(message::envelope(response + after + "<y/>")));
  }
}

TEST(Reading, AnswersOfOtherKinds) {
  const char* const encodings = "=\"ISO-8859-15\"\n = \"windows-1252\"\n=\"utf-7\"\n="; // in the XML declaration
  forEachArrival(encodings, [](WireClient& client, const auto& row) {
    EXPECT_EQ("error 48", client.content(replaced(mapAnswer(""), "=\"utf-8\"", " " + row[0]))) << row[0];
    const char malformed[] = "\xC0\xAF \xE0\x80\xAF \xED\xA0\x80 \xF0\x80\x80\xAF \xF4\x90\x80\x80 \xE9";
    EXPECT_EQ("0 no login {MapName='" + QString::fromLatin1(malformed).toStdString() + "'}",
              client.content(mapAnswer(element("MapName", malformed))));
  });
  WireClient client;
  EXPECT_EQ("0 no login {}", client.content(replaced(mapAnswer("<MapName xsi:nil=\"true\"/>"), "2001", "1999")));
}

TEST(Reading, Attachments) {
  for (const std::string& content :
       {">" + included, std::string(" href='cid:b@x'>"), std::string(" href='cid:b%40x'>")}) {
    const std::string map = mapAnswer("<MapContent" + content + "</MapContent><Version>2</Version>");
    WireClient client;
    client.reply = withAttachment(map, "<A&\r\nB").bytes;
    for (client.piece = 0; client.piece < 3; ++client.piece)
      EXPECT_EQ("0 no login {MapContent=6:<A&\r\nB Version=2}", client.content()) << content << client.piece;
  }
}

TEST(Writing, ABlockWithIdOrTypeTravelsAsAttachment) {
  char type[] = "image/png", id[] = "the-block", raw[] = "raw <bytes>";
  xsd__base64Binary block;
  block.__ptr = reinterpret_cast<unsigned char*>(raw);
  block.__size = 11;
  _dsns__SendFeedbackWithAttachment request;
  _dsns__SendFeedbackWithAttachmentResponse response;
  request.bytes = &block;
  WireClient client;
  client.reply = reply(200, message::answer("SendFeedbackWithAttachment", "")).bytes;
  for (const unsigned form : {0U, 1U, 2U, 3U}) {
    block.id = form & 1 ? id : nullptr;
    block.type = form & 2 ? type : nullptr;
    const auto send = std::exchange(client.soap->fsend, [](auto...) { return SOAP_EOF; });
    EXPECT_EQ(SOAP_EOF, client.__dsns4__SendFeedbackWithAttachment(&request, &response));
    client.soap->fsend = send; // bytes of failed attempts must not count
    EXPECT_EQ(0, client.__dsns4__SendFeedbackWithAttachment(&request, &response));
    const auto sends = [&](const char* text) { return client.sent.find(text) != std::string::npos; };
    const bool isInline = form == 0;
    EXPECT_EQ(isInline ? 1U : 2U, cells(client.sent, raw).size()) << "sent once";
    EXPECT_NE(isInline, sends(raw) && sends("<dsns:bytes href=\"")) << client.sent;
    EXPECT_EQ(isInline, sends("cmF3IDxieXRlcz4=") && sends("Content-Type: application/soap+xml;")) << client.sent;
  }
  block.__size = 0;
  block.id = id;
  EXPECT_EQ(0, client.__dsns4__SendFeedbackWithAttachment(&request, &response));
  EXPECT_NE(std::string::npos, client.sent.find("<dsns:bytes></dsns:bytes>")) << client.sent;
}

// SOAP 1.1 with an encoding style: an object that is referred to twice stands on its own. Null entries are left out.
TEST(Writing, ListsWithObjectsReferredToTwice) {
  dsns__DesktopInfoClass map;
  dsns__ArrayOfDesktopInfoClass list;
  list.DesktopInfoClass = {nullptr, &map, nullptr, &map};
  for (const bool isEncoded : {true, false}) {
    WireClient client;
    const std::string sent = client.written([&](struct soap* soap) {
      soap_set_version(soap, isEncoded ? 1 : 2);
      soap->encodingStyle = isEncoded ? "" : nullptr;
      list.soap_serialize(soap);
      return list.soap_put(soap, "v", nullptr);
    });
    EXPECT_EQ(3U, cells(sent, isEncoded ? "href=\"#" : "<dsns:DesktopInfoClass>").size()) << sent;
    EXPECT_EQ(isEncoded ? 2U : 1U, cells(sent, "id=\"_").size()) << sent;
  }
}

} // namespace
