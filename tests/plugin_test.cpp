// The plug-in's file, loaded as a host loads it.
#include "service/ITarnwellService.h"
#include "tests/Messages.h"
#include "tests/ScriptedService.h"

#include <QtCore/QLibrary>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>
#include <own.nsmap>
#include <soapH.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace {

/// An envelope as the host writes it: it uses the shared gSOAP runtime itself, with its own namespace table and header.
std::string foreignEnvelope() {
  std::ostringstream out;
  char mark[] = "mine";
  SOAP_ENV__Header header;
  header.own__Mark = mark;
  struct soap* soap = soap_new();
  soap->os = &out;
  soap->header = &header;
  const bool failed = soap_begin_send(soap) || soap_envelope_begin_out(soap) || soap_putheader(soap) ||
                      soap_body_begin_out(soap) || soap_body_end_out(soap) || soap_envelope_end_out(soap) ||
                      soap_end_send(soap);
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
  return failed ? "failed" : out.str().substr(out.str().find(" xmlns:own="));
}

const QString pluginFile = TARNWELL_PLUGIN;

/// A plug-in's file, loaded.
class Plugin {
public:
  explicit Plugin(const QString& file) : library(file) {
    factory = reinterpret_cast<ServiceFactory>(library.resolve(serviceFactoryName));
    EXPECT_NE(nullptr, factory) << library.errorString().toStdString();
  }
  std::unique_ptr<ITarnwellService> service(const ScriptedService& server) const {
    std::unique_ptr<ITarnwellService> made(factory());
    made->setEndPoint(QString::fromStdString(server.url()));
    return made;
  }
  QLibrary library;
  ServiceFactory factory;
};

/// The place of a virtual function in the interface's table, which the pointer to it holds (Itanium C++ ABI).
template <class Function> std::size_t slotOf(Function ITarnwellService::* function) {
  std::size_t offset = 0;
  std::memcpy(&offset, &function, sizeof offset);
  return offset / sizeof(void*);
}

const std::string map =
    "<DesktopInfoClass><MapName>n</MapName><Author>a</Author><Description>d</Description><MapContent>QUJD"
    "</MapContent><Thumbnail>QUJD</Thumbnail></DesktopInfoClass>";
const std::string mapList = message::answer("GetMapsList_NEW_DESKTOP", message::listing(map + map));

TEST(Plugin, ExportsOneSymbol) {
  QProcess nm;
  nm.start(TARNWELL_NM, {"-D", "--defined-only", "--format=just-symbols", pluginFile});
  ASSERT_TRUE(nm.waitForFinished());
  EXPECT_EQ(serviceFactoryName + std::string("\n"), nm.readAllStandardOutput().toStdString());
}

// Hosts that are already built call by slot number and with these types.
TEST(Plugin, SlotsAndTypesStay) {
  using Service = ITarnwellService;
  EXPECT_EQ(2U, slotOf<int(QString, QString)>(&Service::login)) << "after the two of the destructor";
  EXPECT_EQ(3U, slotOf<QString() const>(&Service::currentUser));
  EXPECT_EQ(4U, slotOf<void()>(&Service::logout));
  EXPECT_EQ(5U, (slotOf<int(bool, QList<MapInfo>&)>(&Service::getDesktopMapsList)));
  EXPECT_EQ(6U, (slotOf<int(bool, QList<MapInfo>&)>(&Service::getDesktopMapsListLite)));
  EXPECT_EQ(7U, slotOf<int(QString, MapInfo&, QByteArray, bool)>(&Service::saveMap));
  EXPECT_EQ(8U, slotOf<int(MapInfo&)>(&Service::getMap));
  EXPECT_EQ(9U, slotOf<int(MapInfo&)>(&Service::deleteMap));
  EXPECT_EQ(10U, slotOf<int(MapInfo&, const QString&)>(&Service::renameMap));
  EXPECT_EQ(11U, slotOf<bool(QString, int)>(&Service::checkForUpdates));
  EXPECT_EQ(12U, slotOf<bool(QString, int, int)>(&Service::checkForUpdatesExtended));
  EXPECT_EQ(13U, slotOf<QString() const>(&Service::getSetupUrl));
  EXPECT_EQ(14U, slotOf<QString() const>(&Service::getSetupVersion));
  EXPECT_EQ(15U, slotOf<void(QString)>(&Service::setEndPoint));
  EXPECT_EQ(16U, slotOf<void(QString, int, QString, QString, bool)>(&Service::setProxySettings));
  EXPECT_EQ(17U, slotOf<bool() const>(&Service::isUserLogon));
  EXPECT_EQ(18U, slotOf<bool(const QString&, const QString&, const QString&, QByteArray)>(&Service::sendCrashReport));
  EXPECT_EQ(19U, slotOf<void(QString)>(&Service::setProxyHost));
  EXPECT_EQ(20U, slotOf<void(int)>(&Service::setProxyPort));
  EXPECT_EQ(21U, slotOf<void(QString)>(&Service::setProxyUser));
  EXPECT_EQ(22U, slotOf<void(QString)>(&Service::setProxyPassword));
}

// The records in the host's list carry the plug-in's virtual table: it has to stay when the plug-in is unloaded.
TEST(Plugin, ResultsOutliveIt) {
  const ScriptedService server(reply(200, mapList));
  QList<MapInfo> maps;
  Plugin plugin(pluginFile);
  EXPECT_EQ(0, plugin.service(server)->getDesktopMapsList(false, maps));
  ASSERT_TRUE(plugin.library.unload());
  ASSERT_EQ(2, maps.size());
  const std::unique_ptr<MapInfo> copy(new MapInfo(maps[0]));
  maps.clear();
  EXPECT_EQ("n", copy->mapName());
  EXPECT_EQ("ABC", copy->mapThumbnail());
}

/// The plug-in `file` sends and gets its own messages, whatever else is loaded in the process.
std::string exchangeOfPlugin(const QString& file) {
  const ScriptedService server({reply(500, message::fault("soap:Receiver")), reply(200, mapList)});
  const Plugin plugin(file);
  const std::unique_ptr<ITarnwellService> service = plugin.service(server);
  QList<MapInfo> maps;
  const bool isFailed = service->login("a", "b") == ResultFailed;
  const bool isListed = service->getDesktopMapsList(true, maps) == ResultOk && maps.size() == 2;
  const std::string body = server.requests()[0].body;
  const bool isOwn = body.find(" xmlns:dsns=\"" TARNWELL_SERVICE_NAMESPACE "\"") < body.find("<SOAP-ENV:Body>");
  return isFailed && isListed && isOwn ? body.substr(body.find("<SOAP-ENV:Body>")) : "not its own: " + body;
}
const std::string rightExchange = message::sent("<Login><username>a</username><pass>b</pass></Login>");
const std::string rightEnvelope = " xmlns:own=\"urn:host\"><SOAP-ENV:Header><own:Mark>mine</own:Mark></SOAP-ENV:Header>"
                                  "<SOAP-ENV:Body></SOAP-ENV:Body></SOAP-ENV:Envelope>\r\n";

TEST(Isolation, EveryoneUsesTheirOwnRuntime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");                // a new process for each order
  for (const std::string order : {"hpc", "hcp", "pch", "cph"}) { // h the host, p the plug-in, c its copy
    const auto useAll = [&order] {
      const QTemporaryDir folder;
      const QString copy = folder.filePath("copy.so");
      EXPECT_TRUE(QFile::copy(pluginFile, copy));
      for (const char who : order + order) {
        const std::string done = who == 'h' ? foreignEnvelope() : exchangeOfPlugin(who == 'p' ? pluginFile : copy);
        EXPECT_EQ(who == 'h' ? rightEnvelope : rightExchange, done) << who << " of " << order;
      }
      _exit(testing::Test::HasFailure());
    };
    EXPECT_EXIT(useAll(), testing::ExitedWithCode(0), "");
  }
}

} // namespace
