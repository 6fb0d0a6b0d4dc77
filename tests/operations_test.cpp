// All operations of the service, through both families of stubs and the proxy. protocol/schema/desktopservice.wsdl has
// the elements of their requests in their order; another test compares it with the rows.
#include "tests/WireClient.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace {

// The values that each kind of result reads from an answer with the elements of all kinds.
const std::string map = "<MapName>m</MapName>";
const std::string all = message::outcome("DbError", "NoAccess") + element("DesktopInfo", map) +
                        element("DesktopInfoClass", map) +
                        element("DesktopInfoObjectList", element("DesktopInfoClass", map)) +
                        message::loginValue("NotPremiumAccount") + "<Version>10</Version><Path>p</Path>";
const std::map<int, std::string> readOf = {{SOAP_TYPE_dsns__GetMapResponse, "4 login 3 {MapName='m'}"},
                                           {SOAP_TYPE_dsns__MapActionResponse, "4 login 3 {MapName='m'}"},
                                           {SOAP_TYPE_dsns__CompleteDesktopResponse, "login 3 {MapName='m'} end"},
                                           {SOAP_TYPE_dsns__DesktopLoginResponseClass, "login 1"},
                                           {SOAP_TYPE_dsns__DesktopVersioningClass, " Path='p' Version='10'"}};

TEST(Operations, SendAndReadTheirMessages) {
  for (const tarnwell::Operation& row : tarnwell::operations)
    for (const Route route : {Soap12Stub, OtherStub, Proxy}) {
      const ClientOperation& operation = clientOperations[&row - tarnwell::operations];
      SCOPED_TRACE(operation.name + ", route " + std::to_string(route));
      WireClient client;
      client.reply = reply(200, message::answer(operation.name, all)).bytes;
      EXPECT_EQ(readOf.at(tarnwell::typeOf(row.response).rows->type), operation.ask(client, route));
      EXPECT_NE(std::string::npos, client.request().body.find("<dsns:" + operation.name + ">"));
      EXPECT_EQ("\"" TARNWELL_SERVICE_NAMESPACE + operation.name + "\"", client.request().header("SOAPAction"));
      struct soap* const context = std::exchange(client.soap, nullptr);
      EXPECT_EQ("error 20", operation.ask(client, Proxy)) << "without a context";
      client.soap = context;
    }
}

} // namespace
