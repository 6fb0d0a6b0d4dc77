#include "host/Files.h"

#include "host/Text.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace tarnwell {

namespace {

/// Bytes that fit into a QByteArray.
constexpr qint64 mostBytes = 2147483000;

[[noreturn]] void failReading(const QString& file, const QString& reason) {
  fail(LocalError, QString("cannot read %1: %2").arg(quoted(file), reason), "check the file");
}

[[noreturn]] void failWriting(const QString& file, const QString& reason) {
  fail(LocalError, QString("cannot write %1: %2").arg(quoted(file), reason));
}

/// `target` is open without a buffer, so that no error waits for close(), which returns none. `file`: for the message.
void writeWhole(QFileDevice& target, const QString& file, const QByteArray& bytes) {
  // When the space ends, the first write() writes what there is room for, and only the next one tells why.
  for (int written = 0; written < bytes.size();) {
    const qint64 count = target.write(bytes.constData() + written, bytes.size() - written);
    if (count <= 0)
      failWriting(file, target.errorString());
    written += static_cast<int>(count);
  }
}

/// The name of each extended attribute of the file at `path`, and its value.
QList<QPair<QByteArray, QByteArray>> attributesOf(const char* path) {
  constexpr size_t most = 1 << 16; // bytes of all names, and of one value
  const auto buffer = std::make_unique<char[]>(most);
  const ssize_t listed = std::max<ssize_t>(listxattr(path, buffer.get(), most), 0);
  const QByteArray names(buffer.get(), static_cast<int>(listed));
  QList<QPair<QByteArray, QByteArray>> attributes;
  for (const QByteArray& name : names.split('\0')) {
    const ssize_t size = getxattr(path, name.constData(), buffer.get(), most);
    if (size >= 0)
      attributes += {name, QByteArray(buffer.get(), static_cast<int>(size))};
  }
  return attributes;
}

/// Gives the file `target` owner, group, mode and extended attributes of the file at `path`, which it will replace.
/// Returns what it could not.
QString keepAttributes(const QByteArray& path, int target) {
  struct stat old = {};
  struct stat now = {};
  if (stat(path.constData(), &old) != 0 || fstat(target, &now) != 0)
    return {}; // there is no old file
  QStringList lost;
  if (now.st_gid != old.st_gid && fchown(target, static_cast<uid_t>(-1), old.st_gid) != 0)
    lost += "group";
  if (now.st_uid != old.st_uid && fchown(target, old.st_uid, static_cast<gid_t>(-1)) != 0)
    lost += "owner";
  if (fchmod(target, old.st_mode & 07777U) != 0)
    lost += "mode";
  for (const auto& [name, value] : attributesOf(path.constData())) {
    if (fsetxattr(target, name.constData(), value.constData(), static_cast<size_t>(value.size()), 0) != 0)
      lost += "attribute " + quoted(QString::fromUtf8(name));
  }
  QString text = lost.isEmpty() ? QString() : "the new file does not keep the old one's " + lost.join(", ");
  if (old.st_nlink > 1)
    text += (lost.isEmpty() ? "" : "; ") + QString("the file's other names (hard links) keep the old content");
  return text;
}

} // namespace

QByteArray readFile(const QString& file) {
  if (QFileInfo(file).isDir())
    failReading(file, qt_error_string(EISDIR));
  // Without O_NONBLOCK, opening a pipe waits until a program opens it for writing.
  const int descriptor = open(QFile::encodeName(file).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  QFile source;
  if (descriptor < 0 || !source.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle))
    failReading(file, qt_error_string(errno));
  if (source.size() > mostBytes)
    failReading(file, "it is larger than 2 GiB");
  QByteArray content;
  QByteArray piece(1 << 20, Qt::Uninitialized);
  for (;;) {
    const ssize_t count = read(descriptor, piece.data(), static_cast<size_t>(piece.size()));
    pollfd readable{descriptor, POLLIN, 0};
    if (count < 0 && errno == EAGAIN && poll(&readable, 1, -1) >= 0)
      continue;
    if (count < 0)
      failReading(file, qt_error_string(errno));
    if (content.size() + count > mostBytes)
      failReading(file, "it is larger than 2 GiB");
    if (count == 0)
      break;
    content.append(piece.constData(), static_cast<int>(count));
  }
  if (content.isEmpty() && source.isSequential())
    failReading(file, "nothing writes into this pipe");
  return content;
}

qint64 checkMapFile(const QString& file) {
  const QFileInfo info(file);
  if (!info.exists() || info.isDir())
    fail(ResultNoSuchFile, QString("cannot save %1").arg(quoted(file)));
  if (!info.isFile())
    failReading(file, "it is not a regular file");
  QFile source(file);
  if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
    failReading(file, source.errorString());
  if (source.size() > mostBytes)
    failReading(file, "a map of more than 2 GiB cannot be saved");
  QByteArray piece(1 << 20, Qt::Uninitialized);
  qint64 size = 0;
  for (qint64 count = 0; (count = source.read(piece.data(), piece.size())) > 0;)
    size += count;
  if (source.error() != QFileDevice::NoError)
    failReading(file, source.errorString());
  return size;
}

QString copyStandardInput(QTemporaryFile& copy) {
  QFile input;
  QFile output;
  if (!copy.open() || !output.open(copy.handle(), QIODevice::WriteOnly | QIODevice::Unbuffered))
    failWriting(QDir::tempPath(), copy.errorString());
  if (!input.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered))
    failReading("-", input.errorString());
  for (QByteArray piece; !(piece = input.read(1 << 20)).isEmpty();)
    writeWhole(output, QDir::tempPath(), piece);
  if (input.error() != QFileDevice::NoError)
    failReading("-", input.errorString());
  return QString("/proc/self/fd/%1").arg(copy.handle()); // so that the file needs no name
}

QString writeFile(const QString& file, const QByteArray& bytes) {
  constexpr auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
  const QFileInfo existing(file);
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    std::signal(SIGPIPE, SIG_IGN); // when the reader closes the pipe, the write fails and this program goes on
    QFile pipe(file);
    if (!pipe.open(mode))
      failWriting(file, pipe.errorString());
    writeWhole(pipe, file, bytes);
    return {};
  }
  QSaveFile target(file);
  if (!target.open(mode))
    failWriting(file, target.errorString());
  writeWhole(target, file, bytes);
  const QString lost = keepAttributes(QFile::encodeName(file), target.handle());
  if (fsync(target.handle()) != 0)
    failWriting(file, qt_error_string());
  if (!target.commit())
    failWriting(file, target.errorString());
  return lost;
}

CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes) {
  if (file == "-") {
    // Never null: in JSON, an empty map has empty content.
    result.bytes = bytes.isNull() ? QByteArray("") : bytes;
    return result;
  }
  const QString lost = writeFile(file, bytes);
  if (!lost.isEmpty())
    result.message += "; " + lost;
  result.data["file"] = file;
  return result;
}

QString fileNameFor(const QString& name) {
  constexpr int longest = 60; // UTF-16 units, at most 180 bytes; file systems allow 255 bytes
  const bool cutsPair = name.size() > longest && name[longest - 1].isHighSurrogate();
  QString safe = printable(name.left(cutsPair ? longest - 1 : longest)).replace('/', '_').trimmed();
  if (safe.startsWith('.'))
    safe.replace(0, 1, '_');
  return safe.isEmpty() ? QString("unnamed") : safe;
}

} // namespace tarnwell
