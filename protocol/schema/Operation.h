// The operations of the service as data: what clients, servers and documentation need to know of each.
#pragma once

#include "Deployment.h"
#include "protocol/schema/TypeNumbers.h"

#include <cstddef>

namespace tarnwell {

/// One operation. Texts are constants.
struct Operation {
  const char* name;   ///< on the wire: "GetMapsList_NEW_DESKTOP"
  const char* action; ///< SOAP action: the service namespace followed by the name
  int request;        ///< number of the type of the request, which names its element
  int response;       ///< the same of the response
};

/// Position of an operation in `operations`.
enum class OperationIndex : std::size_t {
#define TARNWELL_OPERATION(Name, Wire, Shape, Result) Name,
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

/// All operations, in the slot order of the proxy.
inline constexpr Operation operations[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  {Wire, TARNWELL_SERVICE_NAMESPACE Wire, SOAP_TYPE__dsns__##Name, SOAP_TYPE__dsns__##Name##Response},
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

} // namespace tarnwell
