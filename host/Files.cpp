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

CommandResult readFailure(const QString& file, const QString& reason) {
  return failure(LocalError, QString("cannot read %1: %2").arg(quoted(file), reason), "check the file");
}

bool writeWhole(QFileDevice& target, const QByteArray& bytes) {
  // Without flush() a full disk would be noticed only by close(), which returns no error.
  return target.write(bytes) == bytes.size() && target.flush();
}

} // namespace

CommandResult readFile(const QString& file, QByteArray& bytes) {
  QFile source(file);
  if (!source.open(QIODevice::ReadOnly))
    return readFailure(file, source.errorString());
  if (source.size() > mostBytes)
    return readFailure(file, "it is larger than 2 GiB");
  QByteArray content = source.readAll();
  if (source.error() != QFileDevice::NoError)
    return readFailure(file, source.errorString());
  bytes.swap(content);
  return {};
}

CommandResult checkMapFile(const QString& file, qint64& size) {
  const QFileInfo info(file);
  if (!info.exists() || info.isDir())
    return failure(ResultNoSuchFile, QString("cannot save %1").arg(quoted(file)));
  if (!info.isFile())
    return readFailure(file, "it is not a regular file");
  QFile source(file);
  if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
    return readFailure(file, source.errorString());
  if (source.size() > mostBytes)
    return readFailure(file, "a map of more than 2 GiB cannot be saved");
  QByteArray piece(1 << 20, Qt::Uninitialized);
  qint64 count = 0;
  for (size = 0; (count = source.read(piece.data(), piece.size())) > 0; size += count) {
  }
  return source.error() == QFileDevice::NoError ? CommandResult() : readFailure(file, source.errorString());
}

CommandResult writeFile(const QString& file, const QByteArray& bytes) {
  const auto failed = [&file](const QString& reason) {
    return failure(LocalError, QString("cannot write %1: %2").arg(quoted(file), reason));
  };
  const QFileInfo existing(file);
  if (existing.exists() && !existing.isFile() && !existing.isDir()) {
    std::signal(SIGPIPE, SIG_IGN); // when the reader closes the pipe, the write fails and this program goes on
    QFile pipe(file);
    return pipe.open(QIODevice::WriteOnly) && writeWhole(pipe, bytes) ? CommandResult() : failed(pipe.errorString());
  }
  QSaveFile target(file);
  if (!target.open(QIODevice::WriteOnly) || !writeWhole(target, bytes))
    return failed(target.errorString());
  if (fsync(target.handle()) != 0)
    return failed(qt_error_string());
  return target.commit() ? CommandResult() : failed(target.errorString());
}

CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes) {
  if (file == "-") {
    // Never null: in JSON, an empty map has empty content.
    result.bytes = bytes.isNull() ? QByteArray("") : bytes;
    return result;
  }
  CommandResult written = writeFile(file, bytes);
  if (written.failed())
    return written;
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
