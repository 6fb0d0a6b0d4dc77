// The local service as a process with its own database. Tests send it raw bytes. One thread.
#pragma once

#include "tests/Http.h"
#include "tests/Messages.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>
#include <QtNetwork/QTcpSocket>
#include <sys/socket.h>

/// Exit status and output of a process.
struct Ended {
  int status = -1; // -1: not by itself
  QByteArray out;
  QByteArray err;

  QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
  QJsonObject data() const { return json()["data"].toObject(); }
};

inline Ended finish(QProcess& process, const QByteArray& input = {}) {
  process.write(input);
  process.closeWriteChannel();
  const bool isFinished = process.state() == QProcess::NotRunning || process.waitForFinished(patience);
  const bool isNormal = isFinished && process.exitStatus() == QProcess::NormalExit;
  return {isNormal ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

inline QByteArray contentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/// With two premium accounts and another one, whose password is "secretü".
class LocalService {
public:
  LocalService() {
    for (const QStringList& account : {QStringList{"anna"}, {"carl"}, {"poor", "--not-premium"}})
      EXPECT_EQ(administer(QStringList{"--add-account"} + account, "secretü\n"), "");
    start();
  }
  /// Another process with the file of this path.
  explicit LocalService(const QString& file) : database(file) { start(); }
  ~LocalService() { EXPECT_EQ(stop().status, 0); } // with the leak sanitizer, the status also tells of leaks

  /// What the program prints, or "status" and its exit status when that is not 0. Without "--db" in `arguments` it uses
  /// this database.
  QByteArray administer(const QStringList& arguments, const QByteArray& input = {}) const {
    QProcess program;
    const QStringList file{"--db", path("db")};
    program.start(TARNWELL_LOCALSERVICE, arguments.contains("--db") ? arguments : file + arguments);
    const Ended ended = finish(program, input);
    return ended.status == 0 ? ended.out : "status " + QByteArray::number(ended.status);
  }

  void start(const QStringList& arguments = {}) {
    process.start(TARNWELL_LOCALSERVICE, QStringList{"--port", "0", "--db", database} + arguments);
    while (!process.canReadLine() && process.waitForReadyRead(patience)) {
    }
    endpoint = QString::fromUtf8(process.readLine()).trimmed();
    ASSERT_GT(port(), 0) << endpoint.toStdString();
  }
  /// Stops it by SIGTERM.
  Ended stop() {
    process.terminate();
    return finish(process);
  }

  int port() const { return QUrl(endpoint).port(); }
  QString path(const QString& file) const { return folder.filePath(file); }

  QTemporaryDir folder;
  QString database = path("db");
  QProcess process;
  QString endpoint;
};

/// A raw connection to the service. Every wait is bounded.
class Connection : public QTcpSocket {
public:
  Connection(int port, const std::string& bytes) {
    connectToHost(QHostAddress::LocalHost, static_cast<quint16>(port));
    EXPECT_TRUE(waitForConnected(patience));
    write(bytes.data(), static_cast<qint64>(bytes.size()));
    while (bytesToWrite() > 0 && waitForBytesWritten(patience)) {
    }
  }
  /// Everything that comes; `sendsMore`: without telling the service that no more is sent.
  std::string answer(bool sendsMore = true) {
    if (!sendsMore)
      shutdown(static_cast<int>(socketDescriptor()), SHUT_WR);
    while (waitForReadyRead(patience)) {
    }
    return readAll().toStdString();
  }
};

inline const std::string servicePath = "/service/desktopservice.asmx";
inline const std::string soapType = "Content-Type: application/soap+xml; charset=utf-8\r\n";

inline std::string post(const std::string& body, const std::string& fields = soapType,
                        const std::string& target = servicePath) {
  return "POST " + target + " HTTP/1.1\r\n" + fields + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         body;
}

inline std::string named(const std::string& name) { return element("MapName", name); }
inline std::string identified(const std::string& id) { return element("MapId", id); }
inline std::string described(const std::string& map, bool forced = false) {
  return element("DesktopInfo", map) + (forced ? "<IsForced>true</IsForced>" : "");
}

class LocalServiceTest : public testing::Test, protected LocalService {
protected:
  /// A request of an operation. The service reads the first of two elements with one name.
  static std::string request(const std::string& operation, const std::string& elements = {}) {
    const std::string account = "<username>anna</username><pass>secretü</pass>";
    return post(message::envelope(element(operation, elements + account)));
  }
  /// The elements with text in an answer or fault: texts of enumerations and faults alone, the others with their names.
  /// Without what is false, 0 or no date; identifiers and times of creation as "#" and "%".
  static std::string shown(const std::string& answer) {
    QString text = QString::fromStdString(answer.substr(std::min(answer.find("<?xml"), answer.size())));
    for (const auto& [pattern, by] : {std::pair("<[\\w:]*(Access|Value|Text)[^>]*>", ""),
                                      {"<dsns:(\\w+)>([^<]*)</dsns:\\1>", " \\1=\\2 "},
                                      {"\\w+=(false|0|1970-01-01T00:00:00Z) ", ""},
                                      {"MapId=[0-9a-f-]{36} ", "MapId=# "},
                                      {"Created=[0-9TZ:-]+", "Created=%"},
                                      {"</?[^>]*>", " "}})
      text.replace(QRegularExpression(pattern), by);
    return text.simplified().toStdString();
  }
  std::string call(const std::string& operation, const std::string& elements = {}) const {
    return shown(Connection(port(), request(operation, elements)).answer());
  }

  /// The identifier that --list-maps shows for the last map of a name.
  std::string identifier(const std::string& name) const {
    const QString all = "-\n" + administer({"--list-maps"}),
                  named = QString("\n(\\S+)\t[^\n]*\t%1\n").arg(name.c_str());
    const auto last = all.lastIndexOf(QRegularExpression(named));
    return last < 0 ? "no such map" : all.mid(last + 1).section('\t', 0, 0).toStdString();
  }

  /// The element that means the last map of a name.
  std::string stored(const std::string& name) const { return described(identified(identifier(name))); }
  std::string loading(const std::string& name) const { return request("GetDesktopMapContent", stored(name)); }
  static std::string saving(const std::string& name, const std::string& content, const std::string& id = {}) {
    return request("SaveDesktopMap", described(id + named(name) + element("MapContent", content), true));
  }
};
