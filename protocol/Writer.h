// Writing elements: what the codecs share of the writer's inside. Functions return 0 or the runtime's error code, which
// they also set in the context.
#pragma once

#include "protocol/Type.h"

namespace tarnwell {

/// Writes the children of a record by its rows, in their order.
int writeRecord(struct soap* soap, const Type& type, const void* record);

} // namespace tarnwell
