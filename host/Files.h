// Reads and writes local files whole. Used by the commands. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// The content of `file`, which may be a pipe. Fails with a LocalError when the file cannot be read to its end or does
/// not fit into a QByteArray.
[[nodiscard]] QByteArray readFile(const QString& file);

/// Reads the map file `file` to its end and returns the number of its bytes. Fails with ResultNoSuchFile for a folder
/// or a missing file, as the plug-in does, and with a LocalError for a file that the plug-in could not upload whole.
[[nodiscard]] qint64 checkMapFile(const QString& file);

/// Replaces `file` by a file with `bytes`, whole or not at all. Writes into a pipe or a device instead of replacing it.
/// Fails with a LocalError and the system's reason.
void writeFile(const QString& file, const QByteArray& bytes);

/// writeFile(); returns `result` with the file's name in its data. With "-" it writes nothing and returns `result` with
/// the bytes, for standard output.
[[nodiscard]] CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes);

/// A file name, without a suffix, for a map named `name`: it is not hidden and has no path.
[[nodiscard]] QString fileNameFor(const QString& name);

} // namespace tarnwell
