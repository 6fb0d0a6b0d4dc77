#include "service/MapFile.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cerrno>
#include <pwd.h>
#include <sys/stat.h>

namespace tarnwell {
namespace {

bool isDeviceOrPipe(const QString& path) {
  struct stat status {};
  return stat(QFile::encodeName(path).constData(), &status) == 0 &&
         (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode));
}

/// False: it is too large, or only a part of it can be read.
bool readContent(const QString& path, QByteArray& content) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
    return true;
  if (file.size() > static_cast<qint64>(largestBlock))
    return false;
  content = file.readAll();
  return file.error() == QFileDevice::NoError && content.size() <= static_cast<qint64>(largestBlock);
}

/// Whether the system has no name for a user, which QFileInfo::owner() tells by an empty text, as it does when it
/// fails.
bool isNameless(uint user) {
  passwd entry{}, *found = nullptr;
  char buffer[1024];
  const int error = getpwuid_r(user, &entry, buffer, sizeof buffer, &found);
  return !found && (error == 0 || error == ENOENT || error == ESRCH);
}

} // namespace

ServiceResult readMapFile(const QString& path, MapFile& file) {
  const QFileInfo info(path);
  if (path.contains(QChar::Null) || info.isDir() || !info.exists())
    return ResultNoSuchFile;
  if (isDeviceOrPipe(path) || !readContent(path, file.content))
    return ResultFailed;
  file.modified = info.lastModified();
  file.owner = info.owner();
  return file.owner.isEmpty() && !isNameless(info.ownerId()) ? ResultFailed : ResultOk;
}

} // namespace tarnwell
