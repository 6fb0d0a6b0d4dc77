// What the service's operations do with a Store: one function per operation, found by its place in
// tarnwell::operations. Used by the server. A context and a store belong to one thread at a time.
#pragma once

#include "localservice/Rehearsal.h"
#include "localservice/Store.h"
#include "protocol/desktopservice.h"

namespace localservice {

/// What an operation has come to.
struct Answer {
  const void* response = nullptr; ///< of the operation's response type; belongs to the context
  const char* outcome = "";       ///< name of its access or login value, a constant
  std::string user;               ///< that the request named, UTF-8
};

/// Carries out operation `index` for `request`, an object of the operation's request type in `soap`; or answers with
/// `rehearsed`, if that is not null. The response may point into the request.
/// A database that fails shows in the answer: as access "DbError", and as login outcome "DbError" where the account
/// could not be looked up or the answer has no access. Throws StoreError where an answer has neither, std::bad_alloc.
[[nodiscard]] Answer answer(Store& store, struct soap* soap, tarnwell::OperationIndex index, const void* request,
                            const RehearsedAnswer* rehearsed);

} // namespace localservice
