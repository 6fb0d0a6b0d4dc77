// Failures that the command line asks for, so that developers of hosts can try every outcome. Constant once the command
// line is read: any thread.
#pragma once

#include "protocol/desktopservice.h"

#include <map>
#include <string>

namespace localservice {

/// How an operation is answered instead of being carried out.
struct RehearsedAnswer {
  enum Kind { Result, Fault, Drop } kind = Result;
  dsns__DesktopLoginEnumerators login = dsns__DesktopLoginEnumerators__Success; ///< of a Result
  dsns__DesktopMapAccess access = dsns__DesktopMapAccess__None;                 ///< of a Result that has one
};

class Rehearsal {
public:
  /// Adds "OPERATION=RESULT", "OPERATION=fault" or "OPERATION=drop", names as on the wire. RESULT is a text of
  /// DesktopMapAccess, where the operation's answer has that, or of DesktopLoginEnumerators. Throws
  /// std::invalid_argument, with a text for people.
  void add(const std::string& rule);
  /// Null: carry the operation out.
  const RehearsedAnswer* find(tarnwell::OperationIndex index) const;

private:
  std::map<tarnwell::OperationIndex, RehearsedAnswer> answers;
};

} // namespace localservice
