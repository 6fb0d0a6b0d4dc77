#include "host/Files.h"

#include "host/Text.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>

namespace tarnwell {

Outcome readFile(const QString& file, QByteArray& bytes) {
  QFile source(file);
  if (!source.open(QIODevice::ReadOnly))
    return failure(LocalError, QString("cannot read %1: %2").arg(quoted(file), source.errorString()), "check the path");
  bytes = source.readAll();
  return {};
}

Outcome deliver(Outcome outcome, const QString& file, const QByteArray& bytes) {
  if (file == "-") {
    // Never null, so that an empty map is shown as empty content.
    outcome.bytes = bytes.isNull() ? QByteArray("") : bytes;
    return outcome;
  }
  QSaveFile target(file);
  // A device or a pipe cannot be replaced, only written to.
  const QFileInfo existing(file);
  target.setDirectWriteFallback(existing.exists() && !existing.isFile());
  if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() || !target.commit())
    return failure(LocalError, QString("cannot write %1: %2").arg(quoted(file), target.errorString()));
  outcome.data["file"] = file;
  return outcome;
}

} // namespace tarnwell
