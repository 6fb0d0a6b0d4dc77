// What the runtime context holds after each operation of a service: the records that stay until the next one.
#include "tests/Session.h"

#include <QtCore/QTemporaryFile>
#include <map>

namespace {

/// A service that tells what its context holds.
class Opened : public TarnwellService {
public:
  /// Types and numbers of the managed objects, in the order of the type table.
  std::string objects() const {
    std::map<int, int> counts;
    for (const soap_clist* entry = m_service.proxy.soap->clist; entry; entry = entry->next)
      ++counts[entry->type];
    std::string text;
    for (const auto& [type, count] : counts) {
      const std::string name = tarnwell::findType(type)->name;
      text += (text.empty() ? "" : " ") + name.substr(name.find(':') + 1) + "=" + std::to_string(count);
    }
    return text;
  }
  bool hasData() const { return m_service.proxy.soap->alist != nullptr; }
};

QString savedFile() {
  static QTemporaryFile file;
  return file.open() ? file.fileName() : QString();
}
QList<MapInfo> maps;
MapInfo info;

/// An operation, the content of its successful answer's result, and the objects that stay after success and failure.
struct Operation {
  const char* name;
  std::string result;
  bool (*succeeds)(TarnwellService&);
  const char* left;
  const char* leftByFailure;
};
const std::string text = "<Author>a</Author>", map = text + "<MapContent>QQ==</MapContent>",
                  saved = message::outcome("Success", "Success") + element("DesktopInfoClass", text),
                  listed = message::listing("<DesktopInfoClass>" + map + "</DesktopInfoClass><DesktopInfoClass/>");
const char* const listLeft = "string=1 base64Binary=1 DesktopLoginResponseClass=1 DesktopInfoClass=2 "
                             "ArrayOfDesktopInfoClass=1 CompleteDesktopResponse=1 Header=1";
const char* const actionLeft = "string=1 DesktopLoginResponseClass=1 DesktopInfoClass=1 MapActionResponse=1 Header=1";
const char* const updateLeft = "string=2 DesktopVersioningClass=1 Header=1";
const Operation operations[] = {
    {"Login", message::loginValue("Success"), [](auto& service) { return service.login("a", "b") == ResultOk; },
     "DesktopLoginResponseClass=1 Header=1", "LoginResponse=1"},
    {"GetMapsList_NEW_DESKTOP", listed,
     [](auto& service) { return service.getDesktopMapsList(true, maps) == ResultOk; }, listLeft, ""},
    {"GetMapsListLite_NEW_DESKTOP", listed,
     [](auto& service) { return service.getDesktopMapsListLite(true, maps) == ResultOk; }, listLeft, ""},
    {"GetMapContent_NEW_DESKTOP", message::outcome("Success", "Success") + element("DesktopInfo", map),
     [](auto& service) { return service.getMap(info) == ResultOk; },
     "string=1 base64Binary=2 DesktopLoginResponseClass=1 DesktopInfoClass=2 GetMapResponse=1 Header=1 "
     "GetMapContent_NEW_DESKTOPResponse=1",
     "base64Binary=1 DesktopInfoClass=1 GetMapContent_NEW_DESKTOPResponse=1"},
    {"SaveMap_NEW_DESKTOP", saved,
     [](auto& service) { return service.saveMap(savedFile(), info, "t", true) == ResultOk; },
     "string=1 base64Binary=2 DesktopLoginResponseClass=1 DesktopInfoClass=2 MapActionResponse=1 Header=1 "
     "SaveMap_NEW_DESKTOPResponse=1",
     "base64Binary=2 DesktopInfoClass=1 SaveMap_NEW_DESKTOPResponse=1"},
    {"DeleteDesktopMap", saved, [](auto& service) { return service.deleteMap(info) == ResultOk; }, actionLeft, ""},
    {"RenameDesktopMap", saved, [](auto& service) { return service.renameMap(info, "n") == ResultOk; }, actionLeft, ""},
    {"CheckDesktopVersion", "<Path>p</Path><Version>v</Version>",
     [](auto& service) { return service.checkForUpdates("1", 1); }, updateLeft, ""},
    {"CheckDesktopVersionExtended", "<Path>p</Path><Version>v</Version>",
     [](auto& service) { return service.checkForUpdatesExtended("1", 1, 1); }, updateLeft, ""},
    {"SendFeedbackWithAttachment", saved, [](auto& service) { return service.sendCrashReport("s", "m", "f", "b"); },
     actionLeft, ""},
};

TEST(Context, HoldsObjectsUntilTheNextOperation) {
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    const std::string answer = message::answer(operation.name, operation.result);
    const Reply header = reply(200, replaced(answer, "<soap:Body>", "<soap:Header/><soap:Body>"));
    const ScriptedService server({header, hangUp(0), hangUp(std::string::npos), header, hangUp(0)});
    Opened service;
    service.setEndPoint(QString::fromStdString(server.url()));
    info.setMapThumbnail("t");
    EXPECT_TRUE(operation.succeeds(service));
    EXPECT_EQ(operation.left, service.objects());
    service.renameMap(info, "other");
    EXPECT_EQ("", service.objects());
    operation.succeeds(service);
    EXPECT_EQ(operation.leftByFailure, service.objects());
    EXPECT_NE(std::string::npos, server.request().body.find("<SOAP-ENV:Header></SOAP-ENV:Header>")) << "carried over";
    EXPECT_EQ(ResultNoSuchFile, service.saveMap("", info, "", true));
    EXPECT_EQ("DesktopInfoClass=1 SaveMap_NEW_DESKTOPResponse=1", service.objects());
    EXPECT_FALSE(service.hasData());
  }
}

} // namespace
