// Finds and loads the plug-in, as any host does: by file, and by the decorated name of its one function. One thread.
#pragma once

#include "host/CommandResult.h"
#include "service/ITarnwellService.h"

#include <memory>

namespace tarnwell {

/// Loads the plug-in `file` and sets `service` to a new service of it. An empty `file` means the first plug-in found
/// beside this executable or in its installation. The plug-in stays loaded until the process ends. Returns a
/// LocalError, with `service` unchanged, when there is no such file or it is no plug-in.
[[nodiscard]] CommandResult loadPlugin(const QString& file, std::unique_ptr<ITarnwellService>& service);

} // namespace tarnwell
