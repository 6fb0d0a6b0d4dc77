// Prints the recorded messages of protocol.md: those between the plug-in's code and the local service, whose program is
// the argument, for one operation of each shape.
#include "service/ITarnwellService.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtCore/QXmlStreamWriter>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

QByteArray sent, received;

/// One message with its body indented. Examples replace what differs from run to run.
QByteArray shown(const QByteArray& message) {
  const auto end = message.indexOf("\r\n\r\n");
  QString head = QString::fromUtf8(message.left(end)), body = QString::fromUtf8(message.mid(end + 4));
  const struct {
    const char *pattern, *example;
  } examples[] = {{"(?!0{8})[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", "ae14e9ee-6652-4deb-9086-a7ead4fa192e"},
                  {"20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z", "2026-11-21T04:48:00Z"},
                  {"<dsns:Author>[^<]*", "<dsns:Author>anna"}};
  for (const auto& example : examples)
    body.replace(QRegularExpression(example.pattern), example.example);
  head.replace(QRegularExpression("127\\.0\\.0\\.1:[0-9]+"), "127.0.0.1:8080");
  head.replace(QRegularExpression("Content-Length: [0-9]+"), QString("Content-Length: %1").arg(body.toUtf8().size()));
  QByteArray indented;
  QXmlStreamWriter writer(&indented);
  writer.setAutoFormatting(true);
  writer.setAutoFormattingIndent(2);
  for (QXmlStreamReader reader(body); !reader.atEnd();)
    if (reader.readNext() != QXmlStreamReader::Invalid)
      writer.writeCurrentToken(reader);
  indented.replace("n1:", "SOAP-ENV:"); // a prefix of the writer's
  return head.remove('\r').toUtf8() + "\n\n" +
         QString::fromUtf8(indented).remove(QRegularExpression(" xmlns:[^ >]+")).trimmed().toUtf8() + "\n";
}

} // namespace

// These replace the C library's functions, and record all bytes that the calls send and receive.
extern "C" ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  sent.append(static_cast<const char*>(bytes), static_cast<int>(size));
  return syscall(SYS_sendto, socket, bytes, size, flags, nullptr, 0);
}
extern "C" ssize_t recv(int socket, void* bytes, size_t size, int flags) {
  const ssize_t count = syscall(SYS_recvfrom, socket, bytes, size, flags, nullptr, nullptr);
  received.append(static_cast<const char*>(bytes), static_cast<int>(std::max<ssize_t>(count, 0)));
  return count;
}

int main(int argc, char** argv) {
  const QTemporaryDir folder;
  const QString database = folder.filePath("maps.sqlite");
  QFile file(folder.filePath("plan.twlx"));
  if (!file.open(QIODevice::WriteOnly) || file.write("content") < 0)
    return 1;
  file.close();
  QProcess localService;
  localService.setProgram(argc > 1 ? argv[1] : "tarnwell-localservice");
  localService.setArguments({"--db", database, "--listen", "127.0.0.1:0", "--add-account", "anna", "--update-version",
                             "4.2", "--update-url", "http://www.tarnwell.example/setup-4.2"});
  localService.start();
  localService.write("correct horse\n");
  localService.closeWriteChannel();
  while (!localService.canReadLine() && localService.waitForReadyRead(10000))
    continue;
  const QString endpoint = QString::fromUtf8(localService.readLine()).trimmed();

  const std::unique_ptr<ITarnwellService> service(serviceFactory());
  service->setEndPoint(endpoint);
  MapInfo map;
  QList<MapInfo> maps;
  map.setMapName("Quarterly plan");
  map.setMapDescription("Goals & open points");
  const struct {
    const char* title;
    std::function<void()> call;
  } operations[] = {
      {"Login", [&] { service->login("anna", "correct horse"); }},
      {"Save a new map", [&] { service->saveMap(file.fileName(), map, "preview", false); }},
      {"List", [&] { service->getDesktopMapsList(false, maps); }},
      {"Download", [&] { service->getMap(map); }},
      {"Rename; a deletion has the same form", [&] { service->renameMap(map, "Plan"); }},
      {"Update check", [&] { service->checkForUpdates("4.1", 1); }},
      {"Extended update check", [&] { service->checkForUpdatesExtended("4.1", 1, 2); }},
      {"Crash report", [&] { service->sendCrashReport("Crash", "It stopped.", "crash.dmp", "bytes"); }},
      {"A fault",
       [&] {
         service->setEndPoint(QString(endpoint).replace("desktop", "other"));
         service->logout();
         service->login("anna", "correct horse");
       }},
  };
  std::puts(
      "\n## Recorded messages\n\n`docs/records.cpp` records these messages between the plug-in and the local service. "
      "Bodies are indented and have no\ndeclarations of the namespaces above; identifiers, dates and names are "
      "examples.");
  for (const auto& operation : operations) {
    sent.clear();
    received.clear();
    operation.call();
    std::printf("\n### %s\n\n```\n%s```\n\n```\n%s```\n", operation.title, shown(sent).data(), shown(received).data());
  }
  localService.terminate();
  return localService.waitForFinished(10000) && !received.isEmpty() ? 0 : 1;
}
