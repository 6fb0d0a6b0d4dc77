// Code of all bench clients: the measured operations, the command line, the clock. Each client is a process with one
// thread and measures one peer, from Qt values to Qt values.
#pragma once

#include "service/MapInfo.h"

#include <QtCore/QFile>
#include <QtCore/QList>

#include <memory>

namespace bench {

/// One way to talk to the service. Every operation returns 0 on success.
class Peer {
public:
  virtual ~Peer() = default;
  [[nodiscard]] virtual int login(const QString& user, const QString& password) = 0;
  /// Appends the maps of the answer.
  [[nodiscard]] virtual int list(QList<MapInfo>& maps) = 0;
  /// Sets content, author, version and format flag of `map`.
  [[nodiscard]] virtual int get(MapInfo& map) = 0;
  /// Uploads the bytes of `file` and `thumbnail`; sets both in `map`, and the identifier and version of the answer.
  [[nodiscard]] virtual int save(const QString& file, MapInfo& map, const QByteArray& thumbnail) = 0;
};

/// What get() sets of a downloaded map.
inline void setDownloaded(MapInfo& map, const MapInfo& downloaded) {
  map.setMapContent(downloaded.mapContent());
  map.setMapAuthor(downloaded.mapAuthor());
  map.setVersion(downloaded.version());
  map.setIsTWLX(downloaded.isTWLX());
}

/// What save() sets of the file to upload. False: it cannot be read.
inline bool setUploaded(MapInfo& map, const QString& path, const QByteArray& thumbnail) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return false;
  map.setMapContent(file.readAll());
  map.setMapThumbnail(thumbnail);
  return true;
}

/// What save() sets of the answer.
inline void setSaved(MapInfo& map, const MapInfo& saved) {
  map.setMapID(saved.mapID());
  map.setVersion(saved.version());
}

/// A client's main: CLIENT ENDPOINT login|list|get|save REPEAT [FILE]. Prints one line of key=value pairs per
/// operation: wall time and CPU time (user and system) in nanoseconds; resident memory in KiB before the first
/// operation, the highest since then, and now; the operation's code; with BENCH_DIGEST set, a digest of every value
/// that it delivered.
int run(int argc, char** argv, std::unique_ptr<Peer> (*connect)(const char* endpoint));

} // namespace bench
