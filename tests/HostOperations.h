// Every networked operation of the host interface as a row, and a host that shows all that a service gave it. For tests
// and fuzzers that run all operations.
#pragma once

#include "service/TarnwellService.h"
#include "tests/Messages.h"

#include <QtCore/QTemporaryDir>

inline std::string text(const QString& value) {
  return value.isNull() ? "-" : value.isEmpty() ? "''" : value.toStdString();
}
inline std::string hex(const QByteArray& bytes) { return bytes.isEmpty() ? "-" : bytes.toHex().toStdString(); }
/// The members of a record in their order; "-" for nothing.
inline std::string show(const MapInfo& info) {
  return text(info.mapName()) + " " + (info.mapID().isNull() ? "-" : text(info.mapID().toString())) + " " +
         text(info.mapAuthor()) + " " + text(info.mapModificationDate().toString(Qt::ISODate)) + " " +
         text(info.mapDescription()) + " " + hex(info.mapThumbnail()) +
         (info.mapPublished() ? " published " : " private ") + hex(info.mapContent()) + " " +
         text(QString::number(info.version())) + (info.isTWLX() ? " twlx" : "");
}

const std::string knownId = "{67c8770b-44f1-410a-ab9a-f9b5446f13ee}";
/// A record with a value in every member.
inline MapInfo known() {
  MapInfo info;
  info.setMapName("plan");
  info.setMapID(QUuid(QString::fromStdString(knownId)));
  info.setMapAuthor("Ann");
  info.setMapModificationDate(QDateTime::fromSecsSinceEpoch(1330837567).toOffsetFromUtc(7200));
  info.setMapDescription("about");
  info.setMapThumbnail(QByteArray("T\0x", 3));
  info.setMapPublished(true);
  info.setMapContent("content");
  info.setVersion(1.5F);
  info.setIsTWLX(true);
  return info;
}

/// The file that saveMap uploads.
inline QString savedFile() {
  static const QTemporaryDir folder;
  QFile file(folder.filePath("upé.map"));
  if (!file.exists() && file.open(QIODevice::WriteOnly)) {
    file.write("bytes\0of it", 11);
    file.flush();
    file.setFileTime(QDateTime::fromSecsSinceEpoch(1000000000), QFileDevice::FileModificationTime);
  }
  return file.fileName();
}

/// A host with a record, a list and values of earlier calls. It has access to the context of its service.
class Host : public TarnwellService {
public:
  QList<MapInfo> maps{known()};
  MapInfo info = known();
  const QString file = savedFile(), subject = "sé", message = "m<\n";
  QString word = "word";
  QByteArray bytes{"by\0es", 5};

  explicit Host(const std::string& endpoint, const QString& past = "before") {
    setEndPoint(QString::fromStdString(endpoint));
    m_userName = m_setupUrl = m_setupVersion = past;
  }
  struct soap*& context() { return m_service.proxy.soap; }
  /// All that the host has.
  std::string seen() const {
    std::string all = text(currentUser()) + (isUserLogon() ? " in " : " out ") + text(getSetupUrl()) + " " +
                      text(getSetupVersion()) + "\n" + show(info);
    for (const MapInfo& map : maps)
      all += "\n" + show(map);
    return all;
  }
};

/// An operation and the content of its successful answer's result.
struct HostOperation {
  std::string name, result;
  int (*call)(Host&); ///< 0: it succeeded
  std::string answer() const { return message::answer(name, result); }
};
inline const std::vector<HostOperation>& hostOperations() {
  static const std::string author = "<Author>a</Author>", map = author + "<MapContent>QQ==</MapContent>",
                           success = message::outcome("Success", "Success"),
                           saved = success + "<DesktopInfoClass>" + author + "</DesktopInfoClass>",
                           twice = "<DesktopInfoClass id=\"m\"/><DesktopInfoClass href=\"#m\"/>",
                           listed = message::listing(element("DesktopInfoClass", map) + twice);
  static const std::vector<HostOperation> operations = {
      {"Login", message::loginValue("Success"), [](Host& host) { return host.login(host.word, host.word); }},
      {"GetMapsList_NEW_DESKTOP", listed, [](Host& host) { return host.getDesktopMapsList(true, host.maps); }},
      {"GetMapsListLite_NEW_DESKTOP", listed, [](Host& host) { return host.getDesktopMapsListLite(true, host.maps); }},
      {"GetMapContent_NEW_DESKTOP", success + "<DesktopInfo>" + map + "</DesktopInfo>",
       [](Host& host) { return host.getMap(host.info); }},
      {"SaveMap_NEW_DESKTOP", saved, [](Host& host) { return host.saveMap(host.file, host.info, host.bytes, true); }},
      {"DeleteDesktopMap", saved, [](Host& host) { return host.deleteMap(host.info); }},
      {"RenameDesktopMap", saved, [](Host& host) { return host.renameMap(host.info, host.word); }},
      {"CheckDesktopVersion", "<Path>p</Path><Version>v</Version>",
       [](Host& host) { return host.checkForUpdates(host.word, -3) ? 0 : 1; }},
      {"CheckDesktopVersionExtended", "<Path>p</Path><Version>v</Version>",
       [](Host& host) { return host.checkForUpdatesExtended(host.word, 4, 5) ? 0 : 1; }},
      {"SendFeedbackWithAttachment", saved,
       [](Host& host) { return host.sendCrashReport(host.subject, host.message, host.word, host.bytes) ? 0 : 1; }},
  };
  return operations;
}
