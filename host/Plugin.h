// Finds and loads the plug-in, as any host does: by file, and by the decorated name of its one function. One thread.
#pragma once

#include "host/CommandResult.h"
#include "service/ITarnwellService.h"

#include <memory>

namespace tarnwell {

/// Loads the plug-in `file` and returns a new service of it. An empty `file` means the first plug-in found
/// beside this executable or in its installation. The plug-in stays loaded until the process ends. Fails
/// with a LocalError when there is no such file or it is no plug-in.
[[nodiscard]] std::unique_ptr<ITarnwellService> loadPlugin(const QString& file);

} // namespace tarnwell
