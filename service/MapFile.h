// The local file that a save uploads. Used by TarnwellService alone; any thread.
#pragma once

#include "service/ServiceResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace tarnwell {

/// What a save takes from the file.
struct MapFile {
  QByteArray content;
  QDateTime modified; ///< local time
  QString owner;      ///< name; empty: the system has no name for the owner, or cannot look it up
};

/// Reads the file at `path` into `file`.
/// - ResultOk: also for a file that cannot be opened; its content is then empty, as the interface promises.
/// - ResultNoSuchFile: there is no file, or it is a directory.
/// - ResultFailed: it is a device or a pipe, whose bytes may never end; it is larger than a QByteArray; only a part of
///   it can be read; there is no memory or descriptor to look up its owner.
/// With another result than ResultOk `file` has no meaning. Throws std::bad_alloc.
[[nodiscard]] ServiceResult readMapFile(const QString& path, MapFile& file);

} // namespace tarnwell
