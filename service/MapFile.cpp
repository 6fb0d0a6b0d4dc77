#include "service/MapFile.h"

#include "protocol/runtime/RuntimeInternals.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tarnwell {
namespace {

/// A file that is open for reading; `descriptor` is negative when it cannot be opened. Not a QFile: the first QObject
/// of a thread ends the process when there is no memory.
struct OpenFile {
  explicit OpenFile(const char* name) {
    int flags = O_CLOEXEC | O_LARGEFILE | O_NOCTTY | O_NONBLOCK; // a pipe would wait until somebody writes
    while ((descriptor = open(name, flags)) < 0 && (errno == EINTR || (errno == EAGAIN && flags & O_NONBLOCK)))
      if (errno == EAGAIN) // another process has a lease on the file, and is asked to give it up
        flags &= ~O_NONBLOCK;
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (descriptor >= 0)
      close(descriptor);
  }
  int descriptor = -1;
};

/// False: it is a device or a pipe, or too large, or only a part of it can be read.
bool readContent(const QString& path, QByteArray& content) {
  constexpr auto most = static_cast<int>(largestBlock);
  const QByteArray name = QFile::encodeName(path);
  const OpenFile file(name.constData());
  const bool isOpen = file.descriptor >= 0;
  struct stat status{};
  if ((isOpen ? fstat(file.descriptor, &status) : stat(name.constData(), &status)) != 0 || S_ISCHR(status.st_mode) ||
      S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode) || (isOpen && status.st_size > most))
    return false;
  if (!isOpen)
    return true;
  int size = 0;
  for (ssize_t count = 0; count >= 0 && size <= most;) {
    if (size == content.size()) // one byte more, to see the end
      content.resize(std::max<int>(static_cast<int>(status.st_size), std::min(size, most / 2) * 2) + 1);
    count = read(file.descriptor, content.data() + size, static_cast<std::size_t>(content.size() - size));
    if (count == 0) {
      content.resize(size);
      return true;
    }
    count = count < 0 && errno == EINTR ? 0 : count;
    size += static_cast<int>(count);
  }
  return false;
}

/// False: there is no memory or descriptor to look up the user's name, which is empty if the system has none.
bool findName(uint user, QString& name) {
  passwd entry{}, *found = nullptr;
  std::vector<char> texts(1024);
  int error = 0;
  while ((error = getpwuid_r(user, &entry, texts.data(), texts.size(), &found)) == ERANGE)
    texts.resize(texts.size() * 2);
  if (found)
    name = QFile::decodeName(entry.pw_name);
  return error != ENOMEM && error != EMFILE && error != ENFILE;
}

} // namespace

ServiceResult readMapFile(const QString& path, MapFile& file) {
  const QFileInfo info(path);
  if (path.contains(QChar::Null) || info.isDir() || !info.exists())
    return ResultNoSuchFile;
  if (!readContent(path, file.content))
    return ResultFailed;
  file.modified = info.lastModified();
  return findName(info.ownerId(), file.owner) ? ResultOk : ResultFailed;
}

} // namespace tarnwell
