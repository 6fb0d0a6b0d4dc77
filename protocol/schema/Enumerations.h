// The service's two enumerations. Their texts on the wire are in TypeTable.cpp.
#pragma once

/// "dsns:DesktopLoginEnumerators": how the service judged user name and password.
enum dsns__DesktopLoginEnumerators : int {
  dsns__DesktopLoginEnumerators__NotAUser = 0,
  dsns__DesktopLoginEnumerators__NotPremiumAccount = 1,
  dsns__DesktopLoginEnumerators__Success = 2,
  dsns__DesktopLoginEnumerators__DbError = 3,
  dsns__DesktopLoginEnumerators__None = 4,
};

/// "dsns:DesktopMapAccess": the outcome of an operation on one map.
enum dsns__DesktopMapAccess : int {
  dsns__DesktopMapAccess__DbError = 0,
  dsns__DesktopMapAccess__FileExists = 1,
  dsns__DesktopMapAccess__Success = 2,
  dsns__DesktopMapAccess__None = 3,
  dsns__DesktopMapAccess__NoAccess = 4,
  dsns__DesktopMapAccess__OngoingCollaboration = 5,
  dsns__DesktopMapAccess__MapRemoved = 6,
};
