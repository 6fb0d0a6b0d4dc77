// Reads passwords: from an environment variable, from a command's output or, without echo, from the terminal. There is
// no option for them, because every user of the machine can read a command line. One thread.
#pragma once

#include "host/CommandResult.h"

namespace tarnwell {

/// The value of the environment variable `variable`, which may be empty. When it is not set: the first line that
/// `command` prints, unless that is empty; otherwise asks with `prompt` on the controlling terminal. No shell runs the
/// command: blanks divide its words, double quotes keep them together. Fails with a LocalError when the command fails,
/// with a UsageError when there is no terminal.
[[nodiscard]] QString readPassword(const char* variable, const QString& command, const QString& prompt);

} // namespace tarnwell
