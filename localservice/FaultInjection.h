// Responses that the command line injects, so that developers of hosts can try every outcome. Constant after the
// command line was read: any thread.
#pragma once

#include "protocol/desktopservice.h"

#include <map>
#include <string>

namespace localservice {

/// The response to an operation that is not carried out.
struct InjectedResponse {
  enum Kind { Result, Fault, Drop } kind = Result;
  dsns__DesktopLoginEnumerators login = dsns__DesktopLoginEnumerators__Success; ///< of a Result
  dsns__DesktopMapAccess access = dsns__DesktopMapAccess__None;                 ///< of a Result that has one
};

/// The injected responses by operation.
class FaultInjection {
public:
  /// Adds "OPERATION=RESULT", "OPERATION=fault" or "OPERATION=drop". OPERATION is a name on the wire. RESULT is a text
  /// of DesktopMapAccess, if the operation's response has one, or of DesktopLoginEnumerators. Throws
  /// std::invalid_argument, with a text for people.
  void add(const std::string& rule);
  /// Null: the operation is carried out.
  const InjectedResponse* find(tarnwell::OperationIndex index) const;

private:
  std::map<tarnwell::OperationIndex, InjectedResponse> responses;
};

} // namespace localservice
