// tarnwell save. One thread.
#pragma once

#include "host/CommandRun.h"

namespace tarnwell {

/// Uploads a file as a new map or over a stored one. Every value of the stored map for which no option is given stays.
[[nodiscard]] CommandResult saveMap(CommandRun& run);

} // namespace tarnwell
