#include "protocol/schema/Operation.h"

#include "protocol/Deployment.h"

namespace tarnwell {

const Operation operations[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  {Wire,                                                                                                               \
   TARNWELL_SERVICE_NAMESPACE Wire,                                                                                    \
   "dsns:" Wire,                                                                                                       \
   "dsns:" Wire "Response",                                                                                            \
   SOAP_TYPE__dsns__##Name,                                                                                            \
   SOAP_TYPE__dsns__##Name##Response},
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

} // namespace tarnwell
