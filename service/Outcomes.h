// What the host is told of each outcome in an answer: the result codes of both enumerations, and which of them decides.
// Used by TarnwellService alone; any thread.
#pragma once

#include "protocol/schema/SchemaTypes.h"
#include "service/ServiceResult.h"

namespace tarnwell {

// Without a default, so that a new value does not compile until it has a result; the wire's values are not bounded, and
// any other one is a failure.

constexpr ServiceResult resultOf(dsns__DesktopLoginEnumerators value) {
  switch (value) {
  case dsns__DesktopLoginEnumerators__Success:
    return ResultOk;
  case dsns__DesktopLoginEnumerators__NotAUser:
    return ResultNotAUser;
  case dsns__DesktopLoginEnumerators__NotPremiumAccount:
    return ResultNotPremiumAccount;
  case dsns__DesktopLoginEnumerators__DbError:
  case dsns__DesktopLoginEnumerators__None:
    break;
  }
  return ResultFailed;
}

constexpr ServiceResult resultOf(dsns__DesktopMapAccess value) {
  switch (value) {
  case dsns__DesktopMapAccess__Success:
    return ResultOk;
  case dsns__DesktopMapAccess__FileExists:
    return ResultFileExists;
  case dsns__DesktopMapAccess__NoAccess:
    return ResultNoAccess;
  case dsns__DesktopMapAccess__OngoingCollaboration:
    return ResultOngoingCollaboration;
  case dsns__DesktopMapAccess__MapRemoved:
    return ResultMapRemoved;
  case dsns__DesktopMapAccess__DbError:
  case dsns__DesktopMapAccess__None:
    break;
  }
  return ResultFailed;
}

/// The result of an answer by its login outcome.
template <class Result> int loginOutcome(const Result* result) {
  if (!result || !result->DesktopLoginResponseObject)
    return ResultFailed;
  return resultOf(result->DesktopLoginResponseObject->DesktopLoginValue);
}

/// The result of a map operation, in this order: by the call's code, by the login outcome, by the map-access outcome.
template <class Response, class Result> int mapOutcome(int code, const Response* response, Result* Response::* result) {
  if (code != 0 || !response)
    return ResultFailed;
  const int login = loginOutcome(response->*result);
  return login == ResultOk ? resultOf((response->*result)->DesktopMapAccess) : login;
}

} // namespace tarnwell
