// Completion scripts for shells, made from the table of commands. Pure function, any thread.
#pragma once

#include <QtCore/QString>

namespace tarnwell {

/// The script for `shell`: "bash", "zsh" or "fish"; an empty text for another. It completes commands, options, and file
/// names where an argument or an option's value is one; nothing that would need the service.
[[nodiscard]] QString completionScript(const QString& shell);

} // namespace tarnwell
