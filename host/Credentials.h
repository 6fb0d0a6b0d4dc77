// Reads passwords: from an environment variable or, without echo, from the terminal. There is no option for them,
// because every user of the machine can read a command line. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// Sets `password` to the environment variable `variable`, which may be empty. When it is not set, asks with `prompt`
/// on the controlling terminal. Returns a UsageError, with `password` unchanged, when there is no terminal either.
[[nodiscard]] CommandResult readPassword(const char* variable, const QString& prompt, QString& password);

} // namespace tarnwell
