// The plug-in's file, loaded as a host loads it.
#include "service/ITarnwellService.h"
#include "tests/Messages.h"
#include "tests/ScriptedService.h"
#include "tests/Xml.h"

#include <QtCore/QLibrary>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

#include <unistd.h>

/// An envelope as the host's own use of the runtime writes it (ForeignRuntime.cpp).
std::string foreignEnvelope();

namespace {

const QString pluginFile = TARNWELL_PLUGIN;

/// A plug-in's file, loaded.
class Plugin {
public:
  explicit Plugin(const QString& file = pluginFile) : library(file) {
    factory = reinterpret_cast<ITarnwellService* (*)()>(library.resolve("_Z14serviceFactoryv"));
    EXPECT_NE(nullptr, factory) << library.errorString().toStdString();
  }
  std::unique_ptr<ITarnwellService> service(const ScriptedService& server) const {
    std::unique_ptr<ITarnwellService> made(factory());
    made->setEndPoint(QString::fromStdString(server.url()));
    return made;
  }
  QLibrary library;
  ITarnwellService* (*factory)();
};

/// Another file with the same plug-in, for the life of `folder`.
QString copyOfPlugin(const QTemporaryDir& folder) {
  const QString copy = folder.filePath("copy.so");
  EXPECT_TRUE(QFile::copy(pluginFile, copy));
  return copy;
}

/// Calls the virtual function in `slot` of the interface, whatever the header says about its place.
template <class Result, class... Arguments>
Result callSlot(ITarnwellService* service, std::size_t slot, Arguments... arguments) {
  void** const table = *reinterpret_cast<void***>(service);
  return reinterpret_cast<Result (*)(ITarnwellService*, Arguments...)>(table[slot])(service, arguments...);
}

const std::string loggedIn = message::answer("Login", message::loginValue("Success"));
const std::string map =
    "<DesktopInfoClass><MapName>n</MapName><Author>a</Author><Description>d</Description><MapContent>QUJD"
    "</MapContent><Thumbnail>QUJD</Thumbnail></DesktopInfoClass>";
const std::string mapList = message::answer("GetMapsList_NEW_DESKTOP", message::listing(map + map));

TEST(Plugin, ExportsOneSymbol) {
  QProcess nm;
  nm.start(TARNWELL_NM, {"-D", "--defined-only", "--format=just-symbols", pluginFile});
  ASSERT_TRUE(nm.waitForFinished());
  EXPECT_EQ("_Z14serviceFactoryv\n", nm.readAllStandardOutput().toStdString());
}

TEST(Plugin, SlotsAreInTheirOrder) {
  const std::string success = message::outcome("Success", "Success");
  const std::pair<const char*, std::string> answers[] = {
      {"Login", message::loginValue("Success")},
      {"GetMapsList_NEW_DESKTOP", message::listing(map)},
      {"GetMapsListLite_NEW_DESKTOP", message::listing(map)},
      {"SaveMap_NEW_DESKTOP", success + map},
      {"GetMapContent_NEW_DESKTOP", message::outcome("Success", "NoAccess")},
      {"DeleteDesktopMap", message::outcome("Success", "MapRemoved")},
      {"RenameDesktopMap", message::outcome("Success", "FileExists")},
      {"CheckDesktopVersion", "<Path>p</Path><Version>v</Version>"},
      {"CheckDesktopVersionExtended", "<Path>p2</Path><Version>v2</Version>"},
      {"SendFeedbackWithAttachment", success}};
  std::vector<Reply> replies;
  for (const auto& [operation, result] : answers)
    replies.push_back(reply(200, message::answer(operation, result)));
  const ScriptedService server(replies);
  const Plugin plugin;
  ITarnwellService* const service = plugin.factory();
  const QString url = QString::fromStdString(server.url());
  QList<MapInfo> maps;
  MapInfo info;
  callSlot<void>(service, 15, url);
  EXPECT_EQ(0, (callSlot<int>(service, 2, QString("ann"), QString("p"))));
  EXPECT_EQ("ann", callSlot<QString>(service, 3));
  EXPECT_TRUE(callSlot<bool>(service, 17));
  callSlot<void>(service, 4);
  EXPECT_FALSE(callSlot<bool>(service, 17));
  EXPECT_EQ(0, (callSlot<int, bool, QList<MapInfo>&>(service, 5, true, maps)));
  EXPECT_EQ(0, (callSlot<int, bool, QList<MapInfo>&>(service, 6, true, maps)));
  ASSERT_EQ(2, maps.size());
  EXPECT_EQ("ABC", maps[0].mapThumbnail());
  EXPECT_EQ("", maps[1].mapThumbnail());
  EXPECT_EQ(0, (callSlot<int, QString, MapInfo&, QByteArray, bool>(service, 7, pluginFile, info, QByteArray(), false)));
  EXPECT_EQ(7, (callSlot<int, MapInfo&>(service, 8, info)));
  EXPECT_EQ(10, (callSlot<int, MapInfo&>(service, 9, info)));
  EXPECT_EQ(6, (callSlot<int, MapInfo&, const QString&>(service, 10, info, "new")));
  EXPECT_TRUE((callSlot<bool, QString, int>(service, 11, "1", 1)));
  EXPECT_TRUE((callSlot<bool, QString, int, int>(service, 12, "1", 1, 2)));
  EXPECT_EQ("p2", callSlot<QString>(service, 13));
  EXPECT_EQ("v2", callSlot<QString>(service, 14));
  EXPECT_TRUE(
      (callSlot<bool, const QString&, const QString&, const QString&, QByteArray>(service, 18, "s", "m", "f", "b")));
  EXPECT_EQ(10U, server.requests().size());

  const ScriptedService proxy(reply(200, loggedIn));
  callSlot<void, QString, int, QString, QString, bool>(service, 16, "127.0.0.1", 1, "x", "x", false);
  callSlot<void, QString>(service, 19, "127.0.0.1");
  callSlot<void>(service, 20, proxy.port());
  callSlot<void, QString>(service, 21, "user");
  callSlot<void, QString>(service, 22, "word");
  EXPECT_EQ(0, (callSlot<int, QString, QString>(service, 2, "ann", "p")));
  EXPECT_EQ("Basic dXNlcjp3b3Jk", proxy.request().header("Proxy-Authorization"));
  callSlot<void>(service, 1); // the deleting destructor
}

// The records in the host's list carry the plug-in's virtual table: it has to stay when the plug-in is unloaded.
TEST(Plugin, ResultsOutliveIt) {
  const QTemporaryDir folder;
  const ScriptedService server(reply(200, mapList));
  QList<MapInfo> maps;
  Plugin plugin(copyOfPlugin(folder));
  EXPECT_EQ(0, plugin.service(server)->getDesktopMapsList(false, maps));
  ASSERT_TRUE(plugin.library.unload());
  ASSERT_EQ(2, maps.size());
  const std::unique_ptr<MapInfo> copy(new MapInfo(maps[0]));
  maps.clear();
  EXPECT_EQ("n", copy->mapName());
  EXPECT_EQ("ABC", copy->mapThumbnail());
}

/// What the plug-in `file` sends and gets: its own messages, whoever else is in the process.
std::string exchangeOfPlugin(const QString& file) {
  const ScriptedService server({reply(500, message::fault("soap:Receiver")), reply(200, mapList)});
  const Plugin plugin(file);
  const std::unique_ptr<ITarnwellService> service = plugin.service(server);
  QList<MapInfo> maps;
  const int results = service->login("a", "b") * 10 + service->getDesktopMapsList(true, maps);
  return std::to_string(results) + " " + std::to_string(maps.size()) + "\n" + canonical(server.requests()[0].body);
}
const std::string rightExchange =
    "10 2\n" +
    canonical(message::request("<dsns:Login><dsns:username>a</dsns:username><dsns:pass>b</dsns:pass></dsns:Login>"));
const std::string soap11 = "{http://schemas.xmlsoap.org/soap/envelope/}";
const std::string rightEnvelope = soap11 + "Envelope\n {urn:host}Mark\n " + soap11 + "Body\n";

/// The order in which the three users of a runtime come into one process: h the host, p the plug-in, c its copy.
class Isolation : public testing::TestWithParam<std::string> {};

TEST_P(Isolation, EveryoneUsesTheirOwnRuntime) {
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process
  const auto useAll = [] {
    const QTemporaryDir folder;
    const QString copy = copyOfPlugin(folder);
    int faults = 0;
    for (const char who : GetParam() + GetParam()) {
      const std::string done =
          who == 'h' ? canonical(foreignEnvelope()) : exchangeOfPlugin(who == 'p' ? pluginFile : copy);
      if (done == (who == 'h' ? rightEnvelope : rightExchange))
        continue;
      std::cerr << who << ":\n" << done;
      ++faults;
    }
    _exit(faults);
  };
  EXPECT_EXIT(useAll(), testing::ExitedWithCode(0), "");
}
INSTANTIATE_TEST_SUITE_P(Orders, Isolation, testing::Values("hpc", "hcp", "pch", "cph"));

// The runtime's default would end the process with SIGPIPE.
TEST(Guest, SurvivesAPeerThatClosesDuringAnUpload) {
  const QTemporaryDir folder;
  QFile file(folder.filePath("big.map"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(32 << 20));
  const Plugin plugin;
  for (const std::size_t read : {0U, 1000U, 1000000U}) {
    const ScriptedService server(hangUp(read));
    MapInfo info;
    EXPECT_EQ(ResultFailed, plugin.service(server)->saveMap(file.fileName(), info, QByteArray(), false))
        << "after " << read;
    EXPECT_EQ(32 << 20, info.mapContent().size());
  }
}

TEST(Guest, KeepsOffTheStandardStreams) {
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process, whose streams may be replaced
  const auto useEndpoints = [] {
    const QTemporaryDir folder;
    const auto path = [&](const char* name) { return folder.filePath(name).toStdString(); };
    QFile input(folder.filePath("in"));
    const bool filled = input.open(QIODevice::WriteOnly) && input.write(reply(200, loggedIn).bytes.c_str()) > 0;
    input.close();
    const Plugin plugin;
    bool failed = filled && freopen(path("in").c_str(), "r", stdin) && freopen(path("out").c_str(), "w", stdout) &&
                  freopen(path("err").c_str(), "w", stderr);
    for (const char* endpoint : {"http:///x", "http://", "x", "https://127.0.0.1:1/x", "file:///etc/passwd", ":"}) {
      const std::unique_ptr<ITarnwellService> service(plugin.factory());
      service->setEndPoint(endpoint);
      failed = failed && service->login("ann", "secret") == ResultFailed;
    }
    const bool untouched = lseek(0, 0, SEEK_CUR) == 0 && lseek(1, 0, SEEK_END) == 0 && lseek(2, 0, SEEK_END) == 0;
    _exit(!failed * 2 + !untouched);
  };
  EXPECT_EXIT(useEndpoints(), testing::ExitedWithCode(0), "");
}

} // namespace
