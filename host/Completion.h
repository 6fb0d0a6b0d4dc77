// Completion scripts for shells, made from the table of commands. Pure function, any thread.
#pragma once

#include "host/Command.h"

namespace tarnwell {

/// The script for `shell`: "bash", "zsh" or "fish"; an empty text for another. It completes `commands`, their options,
/// the options `general` of all commands and, where an argument or an option's value is a file, file names. It never
/// asks the service, for example for names of maps.
[[nodiscard]] QString completionScript(const QString& shell, const std::vector<Command>& commands,
                                       const QList<QCommandLineOption>& general);

} // namespace tarnwell
