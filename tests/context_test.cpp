// What the runtime context holds after each operation of a service: the records that stay until the next one.
#include "tests/ServiceUnderTest.h"

namespace {

TEST(Context, HoldsObjectsUntilTheNextOperation) {
  for (const HostOperation& operation : hostOperations()) {
    SCOPED_TRACE(operation.name);
    const Reply header = reply(200, replaced(operation.answer(), "<soap:Body>", "<soap:Header/><soap:Body>"));
    const ScriptedService server({header, hangUp(0), hangUp(std::string::npos), header, hangUp(0)});
    Host service(server.url());
    EXPECT_EQ(0, operation.call(service));
    EXPECT_EQ(operation.left, service.objects());
    service.renameMap(service.info, "other");
    EXPECT_EQ("", service.objects());
    operation.call(service);
    EXPECT_EQ(operation.leftByFailure, service.objects());
    EXPECT_NE(std::string::npos, server.request().body.find("<SOAP-ENV:Header></SOAP-ENV:Header>")) << "carried over";
    EXPECT_EQ(ResultNoSuchFile, service.saveMap("", service.info, "", true));
    EXPECT_EQ("DesktopInfoClass=1 SaveMap_NEW_DESKTOPResponse=1", service.objects());
    EXPECT_EQ(nullptr, service.context()->alist);
  }
}

} // namespace
