// The commands for stored maps, without save. One thread.
#pragma once

#include "host/CommandRun.h"

namespace tarnwell {

[[nodiscard]] CommandResult listMaps(CommandRun& run);
[[nodiscard]] CommandResult getMaps(CommandRun& run);
[[nodiscard]] CommandResult renameMap(CommandRun& run);
[[nodiscard]] CommandResult deleteMaps(CommandRun& run);
[[nodiscard]] CommandResult makeGallery(CommandRun& run);

} // namespace tarnwell
