// The commands that concern no map: login, updates, report, config. One thread.
#pragma once

#include "host/CommandRun.h"

namespace tarnwell {

[[nodiscard]] CommandResult logIn(CommandRun& run);
[[nodiscard]] CommandResult checkForUpdates(CommandRun& run);
[[nodiscard]] CommandResult sendReport(CommandRun& run);
[[nodiscard]] CommandResult showConfiguration(CommandRun& run);

} // namespace tarnwell
