// The namespace table: eight prefixes in a fixed order and a terminator, as the runtime wants it. The program has it
// twice: the runtime's global `namespaces`, and this one, which the proxy installs in contexts that have none.
#pragma once

#include "protocol/runtime/Runtime.h"

namespace tarnwell {

inline constexpr int namespaceCount = 9;
extern const Namespace namespaceTable[namespaceCount];

} // namespace tarnwell
