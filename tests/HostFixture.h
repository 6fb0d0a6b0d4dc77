// The console host beside the local service, for tests that run the host as people and programs do. One thread.
#pragma once

#include "tests/LocalServiceFixture.h"
#include "tests/Table.h"

#include <QtCore/QMap>
#include <memory>
#include <sys/stat.h>

/// The service with a map in each state; "@NAME" in an argument is the map's identifier or the file of that name.
class HostTest : public testing::Test {
protected:
  static void SetUpTestSuite() {
    service = std::make_unique<LocalService>();
    ASSERT_EQ(service->administer({"--update-version", "5.0", "--update-url", "http://setup.example/5"}), "");
    content = QByteArray::fromStdString(randomBytes(300001));
    write("map", content);
    write("empty", "");
    write("small", content.left(5000));
    write("largest", "");
    ASSERT_TRUE(QFile::resize(service->path("largest"), 2147483001)); // takes no space
    ASSERT_EQ(mkfifo(qPrintable(service->path("pipe")), 0600), 0);
    ASSERT_TRUE(QDir(service->path("")).mkdir("tarnwell"));
    write("tarnwell/tarnwell.ini", "timeout=9\n[work]\ntimeout=5\n");
    write("image", "\x89PNG\r\n\x1a\n and so on");
    for (const char* map : {"Goals", "Busy", "Removed"})
      save(map, "anna");
    save("Small", "anna", "@small");
    save("Empty", "anna", "@empty");
    save("Foreign", "carl");
    ASSERT_EQ(tarnwell({"delete", "Removed"}).status, 0);
    ASSERT_EQ(service->administer({"--start-collaboration", resolved("@Busy")}), "");
  }
  static void TearDownTestSuite() { service.reset(); }

  static Ended tarnwell(const QStringList& arguments, const QString& user = "anna",
                        const QString& password = "secretü") {
    QProcess process;
    start(process, QStringList{"--user", user} + arguments, {}, password);
    return finish(process);
  }

  /// Starts the host after `preparation`, shell commands.
  static void start(QProcess& process, const QStringList& arguments, const QString& preparation = {},
                    const QString& password = "secretü") {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TARNWELL_PASSWORD", password);
    environment.insert("XDG_CONFIG_HOME", service->path(""));
    process.setProcessEnvironment(environment);
    QStringList all{"-c",         preparation + "exec \"$@\"", "sh",     TARNWELL_HOST,
                    "--endpoint", service->endpoint,           "--user", "anna"};
    for (const QString& argument : arguments)
      all += resolved(argument);
    process.start("sh", all);
  }

  static QString save(const QString& name, const QString& user, const QString& file = "@map") {
    const Ended run = tarnwell({"save", file, "--name", name, "--json"}, user);
    EXPECT_EQ(run.status, 0) << run.out.toStdString();
    return identifiers[name] = run.data()["map"].toObject()["id"].toString();
  }

  static QString resolved(const QString& argument) {
    if (!argument.startsWith('@'))
      return argument;
    const QString name = argument.mid(1);
    return identifiers.contains(name) ? identifiers[name] : service->path(name);
  }

  static void write(const QString& name, const QByteArray& bytes) {
    QFile file(service->path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
  }

  static inline std::unique_ptr<LocalService> service;
  static inline QByteArray content;
  static inline QMap<QString, QString> identifiers;
};
