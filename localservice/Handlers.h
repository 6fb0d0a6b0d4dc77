// Carries out the service's operations on a Store. Used by RequestHandler. A context and a store belong to one thread
// at a time.
#pragma once

#include "localservice/FaultInjection.h"
#include "localservice/Store.h"
#include "protocol/desktopservice.h"

namespace localservice {

/// The answer to one request.
struct Answer {
  const void* response = nullptr; ///< an object of the operation's response type; belongs to the context
  const char* outcome = "";       ///< for the log: the name of the access or login value, a constant
  std::string user;               ///< the user name in the request, UTF-8; may be empty
};

/// Carries out operation `index` with `request`, an object of the operation's request type in `soap`. If `injected` is
/// not null, answers with it instead. The response may point into the request.
/// When the database fails, the answer's access value is "DbError". Its login value is "DbError" when the account could
/// not be looked up or the answer has no access value. Throws StoreError when an answer has neither, and
/// std::bad_alloc.
[[nodiscard]] Answer answer(Store& store, struct soap* soap, tarnwell::OperationIndex index, const void* request,
                            const InjectedAnswer* injected);

} // namespace localservice
