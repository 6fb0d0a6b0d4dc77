// The console host and the local service as processes of their own, for tests that run the host as people and programs
// do. One thread.
#pragma once

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>
#include <algorithm>
#include <sys/stat.h>

constexpr int patience = 30000; // milliseconds; nothing here takes more than a fraction

/// How a process ended.
struct Ended {
  int status = -1; // -1: not by itself
  QByteArray out;
  QByteArray err;

  QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
  QString lastLine() const { return QString::fromUtf8(err).trimmed().section('\n', -1); }
};

inline Ended finish(QProcess& process, const QByteArray& input = {}) {
  process.write(input);
  process.closeWriteChannel();
  const bool isFinished = process.waitForFinished(patience);
  const bool isNormal = isFinished && process.exitStatus() == QProcess::NormalExit;
  return {isNormal ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

/// The service with premium accounts, another one, and a map in each state; "@NAME" in an argument is the map's
/// identifier or the file of that name.
class HostTest : public testing::Test {
protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "host_test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    folder = new QTemporaryDir;
    for (const QStringList& account : {QStringList{"anna"}, {"carl"}, {"bob", "--not-premium"}})
      ASSERT_EQ(administer(QStringList{"--add-account"} + account, "secret").status, 0);
    ASSERT_EQ(administer({"--update-version", "5.0", "--update-url", "http://setup.example/5"}).status, 0);
    service = new QProcess;
    service->start(TARNWELL_LOCALSERVICE, {"--db", folder->filePath("db"), "--listen", "127.0.0.1:0"});
    while (!service->canReadLine() && service->waitForReadyRead(patience)) {
    }
    endpoint = QString::fromUtf8(service->readLine()).trimmed();
    QRandomGenerator random(7);
    content.resize(300001);
    std::generate(content.begin(), content.end(), [&random] { return static_cast<char>(random.generate()); });
    write("map", content);
    write("empty", "");
    write("small", content.left(5000));
    write("largest", "");
    ASSERT_TRUE(QFile::resize(folder->filePath("largest"), 2147483001)); // takes no space
    ASSERT_EQ(mkfifo(qPrintable(folder->filePath("pipe")), 0600), 0);
    ASSERT_TRUE(QDir(folder->path()).mkdir("tarnwell"));
    write("tarnwell/tarnwell.ini", "timeout=9\n[work]\ntimeout=5\n");
    write("image", "\x89PNG\r\n\x1a\n and so on");
    for (const char* map : {"Goals", "Busy", "Removed"})
      save(map, "anna");
    save("Small", "anna", "@small");
    save("Empty", "anna", "@empty");
    save("Foreign", "carl");
    ASSERT_EQ(tarnwell({"delete", "Removed"}).status, 0);
    ASSERT_EQ(administer({"--start-collaboration", resolved("@Busy")}).status, 0);
  }

  static void TearDownTestSuite() {
    service->terminate();
    EXPECT_TRUE(service->waitForFinished(patience));
    delete service;
    delete folder;
  }

  static Ended administer(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess process;
    process.start(TARNWELL_LOCALSERVICE, QStringList{"--db", folder->filePath("db")} + arguments);
    return finish(process, input);
  }

  static Ended tarnwell(const QStringList& arguments, const QString& user = "anna",
                        const QString& password = "secret") {
    QProcess process;
    start(process, QStringList{"--user", user} + arguments, {}, password);
    return finish(process);
  }

  /// Starts the host after `preparation`, shell commands.
  static void start(QProcess& process, const QStringList& arguments, const QString& preparation = {},
                    const QString& password = "secret") {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TARNWELL_PASSWORD", password);
    environment.insert("XDG_CONFIG_HOME", folder->path());
    process.setProcessEnvironment(environment);
    QStringList all{"-c", preparation + "exec \"$@\"", "sh", TARNWELL_HOST, "--endpoint", endpoint, "--user", "anna"};
    for (const QString& argument : arguments)
      all += resolved(argument);
    process.start("sh", all);
  }

  static QString save(const QString& name, const QString& user, const QString& file = "@map") {
    const Ended run = tarnwell({"save", file, "--name", name, "--json"}, user);
    EXPECT_EQ(run.status, 0) << run.out.toStdString();
    return identifiers[name] = run.json()["data"].toObject()["map"].toObject()["id"].toString();
  }

  static QString resolved(const QString& argument) {
    if (!argument.startsWith('@'))
      return argument;
    const QString name = argument.mid(1);
    return identifiers.contains(name) ? identifiers[name] : folder->filePath(name);
  }

  static void write(const QString& name, const QByteArray& bytes) {
    QFile file(folder->filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
  }

  static QByteArray read(const QString& name) {
    QFile file(folder->filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  static inline QTemporaryDir* folder = nullptr;
  static inline QProcess* service = nullptr;
  static inline QString endpoint;
  static inline QByteArray content;
  static inline QMap<QString, QString> identifiers;
};
