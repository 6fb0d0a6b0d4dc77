// One exchange with the service: a request posted, an answer or a fault read. Written once; the stubs of both binding
// families are this exchange with their names.
#pragma once

#include "protocol/schema/SchemaFunctions.h"

namespace tarnwell {

/// Sends `request` as `operation` to `endpoint` (null: the test deployment) with `action` (null: the operation's own)
/// and reads the answer into `response` (null: the answer is not awaited). Blocks for the whole exchange; the socket is
/// closed on every path, also when an exception leaves.
/// Returns the context's error code: 0; of a fault 1 (Sender), 2 (Receiver), 8 (MustUnderstand), 39 (VersionMismatch),
/// 12 (any other); else the runtime's code of the first thing that failed.
[[nodiscard]] int exchange(struct soap* soap, const char* endpoint, const char* action, OperationIndex operation,
                           const SchemaObject* request, SchemaObject* response);

} // namespace tarnwell

// soap_call___dsns4__<Operation>: the SOAP 1.2 binding, which the library uses. soap_call___dsns3__<Operation>: the
// service's other binding; with this namespace table it sends the same messages.
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  inline int soap_call___dsns4__##Name(struct soap* soap, const char* endpoint, const char* action,                    \
                                       _dsns__##Name* request, _dsns__##Name##Response* response) {                    \
    return tarnwell::exchange(soap, endpoint, action, tarnwell::OperationIndex::Name, request, response);              \
  }                                                                                                                    \
  inline int soap_call___dsns3__##Name(struct soap* soap, const char* endpoint, const char* action,                    \
                                       _dsns__##Name* request, _dsns__##Name##Response* response) {                    \
    return tarnwell::exchange(soap, endpoint, action, tarnwell::OperationIndex::Name, request, response);              \
  }
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
