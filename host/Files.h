// Local files that commands read and write: whole, or the command fails. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// Sets `bytes` to the content of `file`, which may be a pipe. A LocalError, `bytes` unchanged, when it cannot be read
/// to its end or does not fit into a QByteArray.
[[nodiscard]] CommandResult readFile(const QString& file, QByteArray& bytes);

/// Reads the map file `file` to its end and sets `size` to its bytes. ResultNoSuchFile for a folder or nothing, as the
/// plug-in would; a LocalError for anything else that it could not upload whole.
[[nodiscard]] CommandResult checkMapFile(const QString& file, qint64& size);

/// Replaces `file` by one with `bytes`, whole or not at all; a pipe or another file that is not a regular one is
/// written into and never replaced. A LocalError with the system's reason when that fails.
[[nodiscard]] CommandResult writeFile(const QString& file, const QByteArray& bytes);

/// Writes `bytes` to `file`, or with "-" leaves them in the result for standard output. Returns `result` with the
/// file's name in its data, or a LocalError.
[[nodiscard]] CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes);

/// A file name for a map of the name `name`, without a suffix: neither hidden nor with a path in it.
[[nodiscard]] QString fileNameFor(const QString& name);

} // namespace tarnwell
