// Local files that commands read and write. One thread.
#pragma once

#include "host/Outcome.h"

namespace tarnwell {

/// Sets `bytes` to the content of `file`. A LocalError, `bytes` unchanged, when it cannot be opened.
[[nodiscard]] Outcome readFile(const QString& file, QByteArray& bytes);

/// Puts `bytes` where the user wants them: into `file`, which is replaced whole or not at all, or with "-" on standard
/// output. Returns `outcome` with its place in `data`, or a LocalError.
[[nodiscard]] Outcome deliver(Outcome outcome, const QString& file, const QByteArray& bytes);

} // namespace tarnwell
