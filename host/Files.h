// Reads and writes local files whole. Used by the commands. One thread.
#pragma once

#include "host/CommandResult.h"

#include <QtCore/QTemporaryFile>

namespace tarnwell {

/// The content of `file`, which may be a pipe. Fails with a LocalError when the file cannot be read to its end, does
/// not fit into a QByteArray, or is a pipe into which nobody writes.
[[nodiscard]] QByteArray readFile(const QString& file);

/// Reads the map file `file` to its end and returns the number of its bytes. Fails with ResultNoSuchFile for a folder
/// or a missing file, as the plug-in does, and with a LocalError for a file that the plug-in could not upload whole.
[[nodiscard]] qint64 checkMapFile(const QString& file);

/// Copies standard input into `copy` and returns a path for it, which is valid as long as `copy` exists. The plug-in
/// uploads only files. Fails with a LocalError.
[[nodiscard]] QString copyStandardInput(QTemporaryFile& copy);

/// Replaces `file` by a file with `bytes`, whole or not at all. The new file gets owner, mode and extended attributes
/// of the old one. Writes into a pipe or a device instead of replacing it. Returns what could not be kept of the old
/// file, as text; empty: nothing is lost. Fails with a LocalError and the system's reason.
[[nodiscard]] QString writeFile(const QString& file, const QByteArray& bytes);

/// writeFile(); returns `result` with the file's name in its data, and in its message what could not be kept. With "-"
/// it writes nothing and returns `result` with the bytes, for standard output.
[[nodiscard]] CommandResult writeOutput(CommandResult result, const QString& file, const QByteArray& bytes);

/// A file name, without a suffix, for a map named `name`: it is not hidden and has no path.
[[nodiscard]] QString fileNameFor(const QString& name);

} // namespace tarnwell
