// What the service's operations do with a Store: one function per operation, found by its place in
// tarnwell::operations. Used by the server. A context and a store belong to one thread at a time.
#pragma once

#include "localservice/Store.h"
#include "protocol/desktopservice.h"

namespace localservice {

/// Carries out operation `index` for `request`, an object of the operation's request type in `soap`. Returns the
/// response, which belongs to `soap` and may point into the request.
/// A database that fails shows in the answer: as access "DbError", and as login outcome "DbError" where the account
/// could not be looked up or the answer has no access. Throws StoreError where an answer has neither, std::bad_alloc.
[[nodiscard]] const void* answer(Store& store, struct soap* soap, tarnwell::OperationIndex index, const void* request);

} // namespace localservice
