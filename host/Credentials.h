// Passwords: from an environment variable or, without echo, from the terminal. There is no option and no configuration
// key for them: every user of the machine can read a command line. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// Sets `password` to the value of the environment variable `variable`, which may be empty; when it is not set, asks
/// on the controlling terminal with `prompt`. Returns a UsageError, `password` unchanged, when neither is there.
[[nodiscard]] CommandResult readPassword(const char* variable, const QString& prompt, QString& password);

} // namespace tarnwell
