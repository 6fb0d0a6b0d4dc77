// All operations of the service, through both families of stubs and the proxy.
#include "tests/Table.h"
#include "tests/WireClient.h"
#include "tests/Xml.h"

#include <gtest/gtest.h>

#include <map>

namespace {

// Every member of a request has a value of its own, so that a mixed-up element shows.
xsd__string user = L"ann", pass = L"secret", behaviour = L"calm", in = L"in", out = L"out", version = L"9.1";
xsd__string name = L"Ann", email = L"a@b", subject = L"crash", text = L"broke", file = L"dump", mapName = L"plan";
dsns__DesktopInfoClass map;
xsd__base64Binary bytes;
template <class R> void credentials(R& r) { r.username = &user, r.pass = &pass; }
template <class R> void fill(tarnwell::CredentialsRequest<R>& r) { credentials(r); }
template <class R> void fill(tarnwell::ListRequest<R>& r) { credentials(r), r.IsPublished = true; }
template <class R> void fill(tarnwell::MapRequest<R>& r) { credentials(r), r.DesktopInfo = &map; }
template <class R> void fill(tarnwell::ListBehaviourRequest<R>& r) {
  credentials(r), r.IsPublished = true, r.behaviour = &behaviour;
}
template <class R> void fill(tarnwell::MapBehaviourRequest<R>& r) {
  credentials(r), r.DesktopInfo = &map, r.behaviour = &behaviour;
}
template <class R> void fill(tarnwell::SaveRequest<R>& r) { credentials(r), r.DesktopInfo = &map, r.IsForced = true; }
template <class R> void fill(tarnwell::SaveBehaviourRequest<R>& r) {
  credentials(r), r.DesktopInfo = &map, r.IsForced = true, r.behaviour = &behaviour;
}
template <class R> void fill(tarnwell::ConvertRequest<R>& r) {
  credentials(r), r.inFormat = &in, r.outFormat = &out, r.DesktopInfo = &map;
}
template <class R> void fill(tarnwell::VersionRequest<R>& r) { r.version = &version, r.desktopLiveUpdateType = -7; }
template <class R> void fill(tarnwell::ExtendedVersionRequest<R>& r) {
  r.version = &version, r.applicationUpdateType = 2147483647;
}
template <class R> void fill(tarnwell::FeedbackRequest<R>& r) {
  r.name = &name, r.email = &email, r.subject = &subject, r.message = &text;
}
template <class R> void fill(tarnwell::AttachmentRequest<R>& r) {
  r.subject = &subject, r.message = &text, r.bytes = &bytes, r.filename = &file;
}

enum Route { Soap12Stub, OtherStub, Proxy };
using Call = std::string (*)(DesktopServiceSoap12&, Route);

/// Sends the filled request by `route`: what was read of the answer, or "error" and the code.
template <class Ask, class Answer, auto soap12Stub, auto otherStub, auto operation, auto result>
std::string call(DesktopServiceSoap12& client, Route route) {
  Ask request;
  Answer answer;
  fill(request);
  const auto stub = route == Soap12Stub ? soap12Stub : otherStub;
  const int code = route == Proxy ? (client.*operation)(&request, &answer)
                                  : stub(client.soap, client.soap_endpoint, nullptr, &request, &answer);
  return code ? "error " + std::to_string(code) : show(answer.*result);
}
const Call calls[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  &call<_dsns__##Name, _dsns__##Name##Response, &soap_call___dsns4__##Name, &soap_call___dsns3__##Name,                \
        &DesktopServiceSoap12::__dsns4__##Name, &_dsns__##Name##Response::Name##Result>,
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

// The operations in their order: what their request holds, a word for each part, and the kind of their answer.
const auto operations = rows(R"(
GetMapContent_NEW_IPAD          | credentials map behaviour            | content
GetMapContentConverted_NEW_IPAD | credentials map behaviour            | content
GetMapContent_NEW_DESKTOP       | credentials map behaviour            | content
GetMapsList_NEW_DESKTOP         | credentials published behaviour      | list
GetMapsListLite_NEW_DESKTOP     | credentials published behaviour      | list
GetMapsList_NEW_IPAD            | credentials published behaviour      | list
GetMapsListLite_NEW_IPAD        | credentials published behaviour      | list
SaveMap_NEW_IPAD                | credentials map forced behaviour     | action
SaveMap_NEW_DESKTOP             | credentials map forced behaviour     | action
Login                           | credentials                          | login
GetDesktopMapPreview            | credentials map                      | content
RenameDesktopMap                | credentials map                      | action
DeleteDesktopMap                | credentials map                      | action
CheckDesktopVersion             | version live-update                  | version
CheckDesktopVersionExtended     | application-update version no-update | version
SendFeedback                    | sender subject                       | action
SendFeedbackWithAttachment      | subject bytes file                   | action
ConvertMap                      | credentials formats map              | content
GetDesktopMapContent            | credentials map                      | content
GetDesktopUniversalMap          | credentials map                      | content
GetDesktopMapsListLite          | credentials published                | list
GetDesktopMapsList              | credentials published                | list
SaveDesktopMap                  | credentials map forced               | action
)");
const std::map<std::string, std::string> parts = {
    {"credentials", "<dsns:username>ann</dsns:username><dsns:pass>secret</dsns:pass>"},
    {"map",
     "<dsns:DesktopInfo><dsns:MapName>plan</dsns:MapName><dsns:MapId xsi:nil=\"true\"/><dsns:LastModified>"
     "1970-01-01T00:00:00Z</dsns:LastModified><dsns:Created>1970-01-01T00:00:00Z</dsns:Created><dsns:IsPublished>"
     "false</dsns:IsPublished><dsns:AllowInclusion>false</dsns:AllowInclusion><dsns:Version>0</dsns:Version>"
     "<dsns:Format_IsTwlx>false</dsns:Format_IsTwlx></dsns:DesktopInfo>"},
    {"behaviour", "<dsns:behaviour>calm</dsns:behaviour>"},
    {"published", "<dsns:IsPublished>true</dsns:IsPublished>"},
    {"forced", "<dsns:IsForced>true</dsns:IsForced>"},
    {"formats", "<dsns:inFormat>in</dsns:inFormat><dsns:outFormat>out</dsns:outFormat>"},
    {"version", "<dsns:version>9.1</dsns:version>"},
    {"live-update", "<dsns:desktopLiveUpdateType>-7</dsns:desktopLiveUpdateType>"},
    {"no-update", "<dsns:desktopLiveUpdateType>0</dsns:desktopLiveUpdateType>"},
    {"application-update", "<dsns:applicationUpdateType>2147483647</dsns:applicationUpdateType>"},
    {"sender", "<dsns:name>Ann</dsns:name><dsns:email>a@b</dsns:email>"},
    {"subject", "<dsns:subject>crash</dsns:subject><dsns:message>broke</dsns:message>"},
    {"bytes", "<dsns:bytes>QUJD</dsns:bytes>"},
    {"file", "<dsns:filename>dump</dsns:filename>"},
};
const std::string read = "><MapName>m</MapName></DesktopInfo";
// By kind: what an answer's result holds, how it is read, and how an answer without result is.
const std::map<std::string, std::vector<std::string>> answers = {
    {"content",
     {message::outcome("None", "MapRemoved") + "<DesktopInfo" + read + ">", "6 login 4 {MapName='m'}", "none"}},
    {"action",
     {message::outcome("DbError", "NoAccess") + "<DesktopInfoClass" + read + "Class>", "4 login 3 {MapName='m'}",
      "none"}},
    {"list", {message::listing("<DesktopInfoClass" + read + "Class>"), "login 2 {MapName='m'} end", "none"}},
    {"login", {message::loginValue("NotPremiumAccount"), "login 1", "no login"}},
    {"version", {"<Version>10</Version><Path>p</Path>", " Path='p' Version='10'", "none"}},
};

TEST(Operations, SendAndReadTheirMessages) {
  ASSERT_EQ(std::size(calls), operations.size());
  unsigned char data[] = {'A', 'B', 'C'};
  bytes.__ptr = data;
  bytes.__size = 3;
  map.MapName = &mapName;
  for (std::size_t at = 0; at < operations.size(); ++at) {
    const std::string& wire = operations[at][0];
    const std::vector<std::string>& answer = answers.at(operations[at][2]);
    std::string children;
    for (const std::string& part : cells(operations[at][1], " "))
      children += parts.at(part);
    const std::string request = message::request("<dsns:" + wire + ">" + children + "</dsns:" + wire + ">");
    for (const Route route : {Soap12Stub, OtherStub, Proxy}) {
      SCOPED_TRACE(wire + ", route " + std::to_string(route));
      WireClient client;
      client.reply = reply(200, message::answer(wire, answer[0])).bytes;
      EXPECT_EQ(answer[1], calls[at](client, route));
      EXPECT_EQ(canonical(request), canonical(client.request().body));
      EXPECT_EQ("\"" TARNWELL_SERVICE_NAMESPACE + wire + "\"", client.request().header("SOAPAction"));
      client.reply = reply(200, message::envelope("<" + wire + "Response/>")).bytes;
      EXPECT_EQ(answer[2], calls[at](client, route));
    }
  }
}

TEST(WithoutContext, EveryOperationAnswers20) {
  DesktopServiceSoap12 proxy;
  soap_free(proxy.soap);
  proxy.soap = nullptr;
  for (std::size_t at = 0; at < std::size(calls); ++at)
    EXPECT_EQ("error 20", calls[at](proxy, Proxy)) << operations[at][0];
}

} // namespace
