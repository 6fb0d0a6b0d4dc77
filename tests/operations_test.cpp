// All operations of the service, through both families of stubs and the proxy. Which elements their requests have, and
// in which order, stands in protocol/schema/desktopservice.wsdl, which another test compares with the rows.
#include "tests/WireClient.h"

#include <gtest/gtest.h>

namespace {

// What each kind of result reads of one that holds the elements of all.
const std::string map = "<MapName>m</MapName>";
const std::string all = message::outcome("DbError", "NoAccess") + element("DesktopInfo", map) +
                        element("DesktopInfoClass", map) +
                        element("DesktopInfoObjectList", element("DesktopInfoClass", map)) +
                        message::loginValue("NotPremiumAccount") + "<Version>10</Version><Path>p</Path>";
std::string readOf(const dsns__GetMapResponse*) { return "4 login 3 {MapName='m'}"; }
std::string readOf(const dsns__MapActionResponse*) { return "4 login 3 {MapName='m'}"; }
std::string readOf(const dsns__CompleteDesktopResponse*) { return "login 3 {MapName='m'} end"; }
std::string readOf(const dsns__DesktopLoginResponseClass*) { return "login 1"; }
std::string readOf(const dsns__DesktopVersioningClass*) { return " Path='p' Version='10'"; }

enum Route { Soap12Stub, OtherStub, Proxy };

/// Sends an empty request by `route`: what was read of the answer, or "error" and the code.
template <class Ask, class Answer, auto soap12Stub, auto otherStub, auto operation, auto result>
std::string call(DesktopServiceSoap12& client, Route route) {
  Ask request;
  Answer answer;
  const auto stub = route == Soap12Stub ? soap12Stub : otherStub;
  const int code = route == Proxy ? (client.*operation)(&request, &answer)
                                  : stub(client.soap, client.soap_endpoint, nullptr, &request, &answer);
  return code ? "error " + std::to_string(code) : show(answer.*result);
}

const struct {
  std::string name;
  std::string (*call)(DesktopServiceSoap12&, Route);
  std::string read;
} operations[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  {Wire,                                                                                                               \
   &call<_dsns__##Name, _dsns__##Name##Response, &soap_call___dsns4__##Name, &soap_call___dsns3__##Name,               \
         &DesktopServiceSoap12::__dsns4__##Name, &_dsns__##Name##Response::Name##Result>,                              \
   readOf(static_cast<const ResultClass*>(nullptr))},
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

TEST(Operations, SendAndReadTheirMessages) {
  for (const auto& operation : operations)
    for (const Route route : {Soap12Stub, OtherStub, Proxy}) {
      SCOPED_TRACE(operation.name + ", route " + std::to_string(route));
      WireClient client;
      client.reply = reply(200, message::answer(operation.name, all)).bytes;
      EXPECT_EQ(operation.read, operation.call(client, route));
      EXPECT_NE(std::string::npos, client.request().body.find("<dsns:" + operation.name + ">"));
      EXPECT_EQ("\"" TARNWELL_SERVICE_NAMESPACE + operation.name + "\"", client.request().header("SOAPAction"));
    }
}

// Shapes of request that the client never sends: each text is the name of its element, so that mixed-up members show.
TEST(Operations, TextsStandUnderTheirNames) {
  xsd__string username = L"username", pass = L"pass", inFormat = L"inFormat", outFormat = L"outFormat";
  xsd__string name = L"name", email = L"email", subject = L"subject", text = L"message";
  _dsns__GetDesktopMapsList list;
  _dsns__SaveDesktopMap save;
  _dsns__ConvertMap convert;
  _dsns__SendFeedback feedback;
  list.username = save.username = convert.username = &username;
  list.pass = save.pass = convert.pass = &pass;
  convert.inFormat = &inFormat, convert.outFormat = &outFormat;
  feedback.name = &name, feedback.email = &email, feedback.subject = &subject, feedback.message = &text;
  const std::pair<tarnwell::SchemaObject*, std::vector<std::string>> requests[] = {
      {&list, {"username", "pass"}},
      {&save, {"username", "pass"}},
      {&convert, {"username", "pass", "inFormat", "outFormat"}},
      {&feedback, {"name", "email", "subject", "message"}}};
  for (const auto& [request, names] : requests) {
    WireClient client;
    const std::string sent = client.written([&](struct soap* soap) { return request->soap_put(soap, "r", nullptr); });
    for (const std::string& each : names)
      EXPECT_NE(std::string::npos, sent.find(element("dsns:" + each, each))) << sent;
  }
}

TEST(WithoutContext, EveryOperationAnswers20) {
  DesktopServiceSoap12 proxy;
  soap_free(proxy.soap);
  proxy.soap = nullptr;
  for (const auto& operation : operations)
    EXPECT_EQ("error 20", operation.call(proxy, Proxy)) << operation.name;
}

} // namespace
