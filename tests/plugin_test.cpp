// The plug-in's file, loaded as a host loads it.
#include "service/ITarnwellService.h"
#include "tests/Messages.h"
#include "tests/ScriptedService.h"
#include "tests/Xml.h"

#include <QtCore/QLibrary>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>
#include <stdsoap2.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <unistd.h>

// The host uses the shared gSOAP runtime itself, with its own namespace table and header.
struct Namespace namespaces[] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/", nullptr, nullptr},
                                 {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/", nullptr, nullptr},
                                 {"own", "urn:host", nullptr, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr}};
int soap_putheader(struct soap* soap) { return soap_send(soap, "<own:Mark/>"); }
// The runtime's library does not load without the rest of what it expects from a program; here it calls none of it.
int soap_getheader(struct soap*) { return SOAP_OK; }
void soap_serializeheader(struct soap*) {}
int soap_getfault(struct soap*) { return SOAP_OK; }
int soap_putfault(struct soap*) { return SOAP_OK; }
void soap_serializefault(struct soap*) {}
const char** soap_faultcode(struct soap*) { return nullptr; }
const char** soap_faultsubcode(struct soap*) { return nullptr; }
const char** soap_faultstring(struct soap*) { return nullptr; }
const char** soap_faultdetail(struct soap*) { return nullptr; }
const char* soap_fault_subcode(struct soap*) { return nullptr; }
const char* soap_fault_string(struct soap*) { return nullptr; }
const char* soap_fault_detail(struct soap*) { return nullptr; }
extern "C" {
void* soap_getelement(struct soap*, const char*, int*) { return nullptr; }
int soap_putelement(struct soap*, const void*, const char*, int, int) { return SOAP_OK; }
void soap_markelement(struct soap*, const void*, int) {}
void* soap_dupelement(struct soap*, const void*, int) { return nullptr; }
void soap_delelement(const void*, int) {}
}

/// An envelope as the host writes it.
std::string foreignEnvelope() {
  std::ostringstream out;
  struct soap* soap = soap_new();
  soap->os = &out;
  const bool failed = soap_begin_send(soap) || soap_envelope_begin_out(soap) || soap_putheader(soap) ||
                      soap_body_begin_out(soap) || soap_body_end_out(soap) || soap_envelope_end_out(soap) ||
                      soap_end_send(soap);
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
  return failed ? "failed" : out.str();
}

namespace {

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
  return isFailed && isListed ? canonical(server.requests()[0].body) : "wrong results";
}
const std::string rightExchange = canonical(message::request("<Login><username>a</username><pass>b</pass></Login>"));
const std::string rightEnvelope = canonical("<e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                                            "<Mark xmlns=\"urn:host\"/><e:Body></e:Body></e:Envelope>");

TEST(Isolation, EveryoneUsesTheirOwnRuntime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");                // a new process for each order
  for (const std::string order : {"hpc", "hcp", "pch", "cph"}) { // h the host, p the plug-in, c its copy
    const auto useAll = [&order] {
      const QTemporaryDir folder;
      const QString copy = folder.filePath("copy.so");
      EXPECT_TRUE(QFile::copy(pluginFile, copy));
      for (const char who : order + order) {
        const std::string done =
            who == 'h' ? canonical(foreignEnvelope()) : exchangeOfPlugin(who == 'p' ? pluginFile : copy);
        EXPECT_EQ(who == 'h' ? rightEnvelope : rightExchange, done) << who << " of " << order;
      }
      _exit(testing::Test::HasFailure());
    };
    EXPECT_EXIT(useAll(), testing::ExitedWithCode(0), "");
  }
}

} // namespace
