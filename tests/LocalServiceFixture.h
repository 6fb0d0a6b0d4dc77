// The local service as a process of its own, on a database of its own, called through the binding. One thread.
#pragma once

#include "client/DesktopServiceSoap12.h"
#include "tests/Show.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

constexpr int patience = 30000; // milliseconds; nothing here takes more than a fraction

/// What requests are filled with: members named as the elements they fill.
struct Values {
  xsd__string username;
  xsd__string pass;
  dsns__DesktopInfoClass* DesktopInfo = nullptr;
  bool IsForced = false;
  bool IsPublished = false;
  xsd__string inFormat = L"a";
  xsd__string outFormat = L"a";
  xsd__string version = L"1.9";
  xsd__string subject = L"Crash";
  xsd__string message = L"It broke: ü";
  xsd__base64Binary* bytes = nullptr;
};

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

  /// Sends no more and gives everything that comes.
  std::string finish() {
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
  Map(const std::wstring& mapName, const std::string& content) : name(mapName), bytes(content) {
    MapName = &name;
    block.__ptr = reinterpret_cast<unsigned char*>(bytes.data());
    block.__size = static_cast<int>(bytes.size());
    Thumbnail = MapContent = &block;
  }
  Map(const Map&) = delete;
  Map& operator=(const Map&) = delete;
  Map& identified(const QByteArray& identifier) {
    id = "{" + identifier.toUpper().toStdString() + "}"; // any form is taken
    MapId = id.data();
    return *this;
  }
};

inline Values by(const wchar_t* user, dsns__DesktopInfoClass* map = nullptr, bool isForced = false) {
  Values values;
  values.username = user;
  values.pass = L"öffne dich";
  values.DesktopInfo = map;
  values.IsForced = isForced;
  return values;
}

class LocalServiceTest : public testing::Test {
protected:
  using Index = tarnwell::OperationIndex;

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

  /// What the program prints, or "status" and its exit status when that is not 0.
  QByteArray administer(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    process.start(TARNWELL_LOCALSERVICE, QStringList{"--db", database()} + arguments);
    process.write(input);
    process.closeWriteChannel();
    const bool isDone = process.waitForFinished(patience) && process.exitCode() == 0;
    return isDone ? process.readAllStandardOutput() : "status " + QByteArray::number(process.exitCode());
  }

  void start(const QStringList& arguments = {}) {
    service.start(TARNWELL_LOCALSERVICE, QStringList{"--db", database(), "--port", "0"} + arguments);
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

  /// Calls an operation with the values that its request has elements for. Its result as show() has it, identifiers and
  /// times of creation as "#" and "%"; or "error" and the code.
  std::string call(Index index, Values values) {
    DesktopServiceSoap12 client;
    const auto instantiate = [&client](int number) {
      return tarnwell::instantiate(client.soap, -1, tarnwell::typeOf(number), nullptr);
    };
    const tarnwell::Operation& operation = tarnwell::operations[static_cast<std::size_t>(index)];
    void* const request = instantiate(operation.request);
    void* const response = instantiate(operation.response);
    fill(tarnwell::typeOf(operation.request), request, values);
    const int code = tarnwell::exchange(client.soap, endpoint.constData(), nullptr, index,
                                        static_cast<tarnwell::SchemaObject*>(request), static_cast<tarnwell::SchemaObject*>(response));
    const tarnwell::Row& result = *tarnwell::typeOf(operation.response).rows;
    const std::string text =
        code ? "error " + std::to_string(code) : showResult(result.type, *static_cast<void**>(result.member(response)));
    return QString::fromStdString(text)
        .replace(QRegularExpression("MapId=[0-9a-f-]{36}(?=[ }])"), "MapId=#")
        .replace(QRegularExpression("Created=[0-9]+"), "Created=%")
        .trimmed()
        .toStdString();
  }

  QTemporaryDir folder;
  QProcess service;
  QByteArray endpoint;

private:
  template <class Member> static void set(const tarnwell::Type& type, void* request, const char* local, Member value) {
    for (std::size_t i = 0; i < type.rowCount; ++i)
      if (std::string(type.rows[i].local) == local)
        *static_cast<Member*>(type.rows[i].member(request)) = value;
  }
  static void fill(const tarnwell::Type& type, void* request, Values& values) {
    set(type, request, "username", &values.username);
    set(type, request, "pass", &values.pass);
    set(type, request, "DesktopInfo", values.DesktopInfo);
    set(type, request, "IsForced", values.IsForced);
    set(type, request, "IsPublished", values.IsPublished);
    set(type, request, "inFormat", &values.inFormat);
    set(type, request, "outFormat", &values.outFormat);
    set(type, request, "version", &values.version);
    set(type, request, "subject", &values.subject);
    set(type, request, "message", &values.message);
    set(type, request, "bytes", values.bytes);
  }
  static std::string showResult(int type, const void* result) {
    switch (type) {
    case SOAP_TYPE_dsns__DesktopLoginResponseClass:
      return show(static_cast<const dsns__DesktopLoginResponseClass*>(result));
    case SOAP_TYPE_dsns__CompleteDesktopResponse:
      return show(static_cast<const dsns__CompleteDesktopResponse*>(result));
    case SOAP_TYPE_dsns__GetMapResponse:
      return show(static_cast<const dsns__GetMapResponse*>(result));
    case SOAP_TYPE_dsns__MapActionResponse:
      return show(static_cast<const dsns__MapActionResponse*>(result));
    default:
      return show(static_cast<const dsns__DesktopVersioningClass*>(result));
    }
  }
};
