// Reads and writes local files whole, or fails. Used by the commands. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// Sets `bytes` to the content of `file`, which may be a pipe. Returns a LocalError, with `bytes` unchanged, when the
/// file cannot be read to its end or does not fit into a QByteArray.
[[nodiscard]] CommandResult readFile(const QString& file, QByteArray& bytes);

/// Reads the map file `file` to its end and sets `size` to the number of its bytes. Returns ResultNoSuchFile for a
/// folder or a missing file, as the plug-in does, and a LocalError for a file that the plug-in could not upload whole.
[[nodiscard]] CommandResult checkMapFile(const QString& file, qint64& size);

/// Replaces `file` by a file with `bytes`, whole or not at all. Writes into a pipe or a device instead of replacing it.
/// Returns a LocalError with the system's reason when that fails.
[[nodiscard]] CommandResult writeFile(const QString& file, const QByteArray& bytes);

/// Writes `bytes` to `file`. Returns `result` with the file's name in its data, or a LocalError. With "-" it writes
/// nothing and returns `result` with the bytes, for standard output.
[[nodiscard]] CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes);

/// A file name, without a suffix, for a map named `name`: it is not hidden and has no path.
[[nodiscard]] QString fileNameFor(const QString& name);

} // namespace tarnwell
