// Carries out the service's operations on a Store. Used by RequestHandler. A context and a store belong to one thread
// at a time.
#pragma once

#include "localservice/FaultInjection.h"
#include "localservice/MemoryBudget.h"
#include "localservice/Refusal.h"
#include "localservice/Store.h"
#include "protocol/desktopservice.h"

namespace localservice {

/// What an operation has led to.
struct Outcome {
  const void* response; ///< an object of the operation's response type; belongs to the context
  const char* name;     ///< for the log: the name of the access or login value, a constant
};

/// The user name in `request`, UTF-8; empty when it has none.
[[nodiscard]] std::string userOf(struct soap* soap, tarnwell::OperationIndex index, void* request);

/// Carries out operation `index` with `request`, an object of the operation's request type in `soap`. If `injected` is
/// not null, responds with it instead. The response may point into the request. `reservation` is asked for the memory
/// of byte blocks and lists in the response; Refused is thrown when there is none. When the database fails, the
/// response's access value is "DbError". Its login value is "DbError" when the account could not be looked up or the
/// response has no access value. Throws StoreError when a response has neither, or a report was not kept: clients look
/// at nothing else. Throws std::bad_alloc.
[[nodiscard]] Outcome carryOut(Store& store, struct soap* soap, tarnwell::OperationIndex index, const void* request,
                               const InjectedResponse* injected, Reservation& reservation);

} // namespace localservice
