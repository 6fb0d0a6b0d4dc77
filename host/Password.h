// Passwords: from an environment variable or, without echo, from the terminal; there is no option for them, since the
// command line is visible to every user of the machine. One thread.
#pragma once

#include "host/Outcome.h"

namespace tarnwell {

/// Sets `password` to the value of the environment variable `variable`, which may be empty; when it is not set, asks
/// on the controlling terminal with `prompt`. An interrupt while asking restores the terminal and ends the process.
/// Returns a UsageError, `password` unchanged, when neither is there.
[[nodiscard]] Outcome readPassword(const char* variable, const QString& prompt, QString& password);

} // namespace tarnwell
