#include "host/Files.h"

#include "host/Text.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <csignal>
#include <unistd.h>

namespace tarnwell {

namespace {

/// Bytes that fit into a QByteArray.
constexpr qint64 mostBytes = 2147483000;

[[noreturn]] void failReading(const QString& file, const QString& reason) {
  fail(LocalError, QString("cannot read %1: %2").arg(quoted(file), reason), "check the file");
}

bool writeWhole(QFileDevice& target, const QByteArray& bytes) {
  // Without flush() a full disk would be noticed only by close(), which returns no error.
  return target.write(bytes) == bytes.size() && target.flush();
}

} // namespace

QByteArray readFile(const QString& file) {
  QFile source(file);
  if (!source.open(QIODevice::ReadOnly))
    failReading(file, source.errorString());
  if (source.size() > mostBytes)
    failReading(file, "it is larger than 2 GiB");
  QByteArray content = source.readAll();
  if (source.error() != QFileDevice::NoError)
    failReading(file, source.errorString());
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

void writeFile(const QString& file, const QByteArray& bytes) {
  const auto check = [&file](bool isWritten, const QIODevice& device) {
    if (!isWritten)
      fail(LocalError, QString("cannot write %1: %2").arg(quoted(file), device.errorString()));
  };
  const QFileInfo existing(file);
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    std::signal(SIGPIPE, SIG_IGN); // when the reader closes the pipe, the write fails and this program goes on
    QFile pipe(file);
    return check(pipe.open(QIODevice::WriteOnly) && writeWhole(pipe, bytes), pipe);
  }
  QSaveFile target(file);
  check(target.open(QIODevice::WriteOnly) && writeWhole(target, bytes), target);
  if (fsync(target.handle()) != 0)
    fail(LocalError, QString("cannot write %1: %2").arg(quoted(file), qt_error_string()));
  check(target.commit(), target);
}

CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes) {
  if (file == "-") {
    // Never null: in JSON, an empty map has empty content.
    result.bytes = bytes.isNull() ? QByteArray("") : bytes;
    return result;
  }
  writeFile(file, bytes);
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
