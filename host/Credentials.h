// Reads passwords: from an environment variable or, without echo, from the terminal. There is no option for them,
// because every user of the machine can read a command line. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// The value of the environment variable `variable`, which may be empty. When it is not set, asks with `prompt` on the
/// controlling terminal. Fails with a UsageError when there is no terminal either.
[[nodiscard]] QString readPassword(const char* variable, const QString& prompt);

} // namespace tarnwell
