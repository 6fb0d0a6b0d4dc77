// The local service as a process of its own, on a database of its own, called through the binding or by raw bytes. One
// thread.
#pragma once

#include "client/DesktopServiceSoap12.h"
#include "tests/Show.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

constexpr int patience = 30000; // milliseconds; nothing here takes more than a fraction

/// What requests are filled with, those that have such elements.
struct Values {
  xsd__string user = L"anna";
  dsns__DesktopInfoClass* map = nullptr;
  bool flag = false; ///< forced or published
  xsd__string password = L"öffne dich";
  xsd__string inFormat = L"a";
  xsd__string outFormat = L"a";
  xsd__string version = L"1.9";
  xsd__string subject = L"Crash\n\x1b[31m";
  xsd__string message = L"It broke: ü";
  xsd__base64Binary* bytes = nullptr;

  /// Sets every one of these members that the request has.
  template <class Request> void fill(Request& request) {
    const auto set = [&request](auto assign) {
      if constexpr (std::is_invocable_v<decltype(assign), Request&>)
        assign(request);
    };
    set([this](auto& r) -> decltype(void(r.username = r.pass)) { r.username = &user, r.pass = &password; });
    set([this](auto& r) -> decltype(void(r.DesktopInfo)) { r.DesktopInfo = map; });
    set([this](auto& r) -> decltype(void(r.IsForced)) { r.IsForced = flag; });
    set([this](auto& r) -> decltype(void(r.IsPublished)) { r.IsPublished = flag; });
    set([this](auto& r) -> decltype(void(r.inFormat)) { r.inFormat = &inFormat, r.outFormat = &outFormat; });
    set([this](auto& r) -> decltype(void(r.version)) { r.version = &version; });
    set([this](auto& r) -> decltype(void(r.subject)) { r.subject = &subject, r.message = &message; });
    set([this](auto& r) -> decltype(void(r.bytes)) { r.bytes = bytes; });
  }
};

/// Calls operation `name` with those values that its request has. Its result as show() has it, identifiers and times of
/// creation as "#" and "%"; or "error" and the code.
inline std::string callService(const QByteArray& endpoint, const std::string& name, Values values) {
  DesktopServiceSoap12 client;
  client.soap_endpoint = endpoint.constData();
  QString text = "no such operation";
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  if (name == Wire) {                                                                                                  \
    _dsns__##Name request;                                                                                             \
    _dsns__##Name##Response response;                                                                                  \
    values.fill(request);                                                                                              \
    const int code = client.__dsns4__##Name(&request, &response);                                                      \
    text = QString::fromStdString(code ? "error " + std::to_string(code) : show(response.Name##Result));               \
  }
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
  return text.replace(QRegularExpression("MapId=[0-9a-f-]{36}(?=[ }])"), "MapId=#")
      .replace(QRegularExpression("Created=[0-9]+"), "Created=%")
      .trimmed()
      .toStdString();
}

/// A raw connection to the service, of which every wait is bounded.
class Connection {
public:
  Connection(int port, const std::string& bytes) {
    const timeval limit = {patience / 1000, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { close(fd); }

  /// Everything that comes; `sendsMore`: without telling the service that no more is sent.
  std::string answer(bool sendsMore) {
    if (!sendsMore)
      shutdown(fd, SHUT_WR);
    std::string all;
    char some[4096];
    for (ssize_t size; (size = recv(fd, some, sizeof some, 0)) > 0;)
      all.append(some, static_cast<std::size_t>(size));
    return all;
  }

private:
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
};

/// A map as a request describes it.
struct Map : dsns__DesktopInfoClass {
  std::wstring name;
  std::string id, bytes;
  xsd__base64Binary block;
  Map(const std::wstring& mapName, const std::string& content, const QByteArray& identifier = {})
      : name(mapName), bytes(content) {
    MapName = &name;
    block.__ptr = reinterpret_cast<unsigned char*>(bytes.data());
    block.__size = static_cast<int>(bytes.size());
    Thumbnail = MapContent = &block;
    if (!identifier.isEmpty())
      identify(identifier);
  }
  Map(const Map&) = delete;
  Map& operator=(const Map&) = delete;
  void identify(const QByteArray& identifier) {
    id = "{" + identifier.toUpper().toStdString() + "}"; // any form is taken
    MapId = id.data();
  }
};

class LocalServiceTest : public testing::Test {
protected:
  LocalServiceTest() {
    static int argc = 1;
    static char name[] = "localservice_test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    for (const QStringList& account : {QStringList{"anna"}, {"carl"}, {"poor", "--not-premium"}})
      EXPECT_EQ(administer(QStringList{"--add-account"} + account, "öffne dich\n"), "");
    start();
  }
  ~LocalServiceTest() override { EXPECT_EQ(stop(), 0); } // also tells of leaks, where they are looked for

  /// What the program prints, or "status" and its exit status when that is not 0. Without "--db" in `arguments` it uses
  /// the test's database.
  QByteArray administer(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    const QStringList file{"--db", database()};
    process.start(TARNWELL_LOCALSERVICE, arguments.contains("--db") ? arguments : file + arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool isDone = process.waitForFinished(patience) && process.exitCode() == 0;
    return isDone ? process.readAllStandardOutput() : "status " + QByteArray::number(process.exitCode());
  }

  void start(const QStringList& arguments = {}) {
    service.start(TARNWELL_LOCALSERVICE, QStringList{"--port", "0", "--db", database()} + arguments);
    while (!service.canReadLine() && service.waitForReadyRead(patience)) {
    }
    endpoint = service.readLine().trimmed();
    ASSERT_GT(port(), 0) << endpoint.toStdString();
  }
  /// Stops it as people do. Its exit status, -1 when it did not end by itself.
  int stop() {
    service.terminate();
    const bool isFinished = service.state() == QProcess::NotRunning || service.waitForFinished(patience);
    return isFinished && service.exitStatus() == QProcess::NormalExit ? service.exitCode() : -1;
  }

  /// The identifier that --list-maps shows for a name.
  QByteArray identifier(const QByteArray& name) {
    for (const QByteArray& line : administer({"--list-maps"}).split('\n'))
      if (line.endsWith("\t" + name))
        return line.left(line.indexOf('\t'));
    return "no such map";
  }

  QString database() const { return folder.filePath("db"); }
  int port() const { return QUrl(endpoint).port(); }
  std::string call(const std::string& operation, const Values& values = {}) const {
    return callService(endpoint, operation, values);
  }

  QTemporaryDir folder;
  QProcess service;
  QByteArray endpoint;
};
