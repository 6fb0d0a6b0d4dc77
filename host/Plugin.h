// Finds and loads the plug-in, as any host does: by file, and by the decorated name of its one function. One thread.
#pragma once

#include "host/CommandResult.h"
#include "service/ITarnwellService.h"

#include <memory>

namespace tarnwell {

/// Loads the plug-in `file`, or with an empty text the first found beside this executable or where an installation has
/// it, and sets `service` to a new service of it. The plug-in stays loaded to the end of the process. Returns a
/// LocalError, with `service` unchanged, when there is none or it is no such plug-in.
[[nodiscard]] CommandResult loadPlugin(const QString& file, std::unique_ptr<ITarnwellService>& service);

} // namespace tarnwell
