// Makes a blocking call in a thread of its own: meanwhile the terminal shows its progress, and a time limit or Ctrl-C
// can end it. Used for every call of the service, from one thread.
#pragma once

#include "service/CallMonitor.h"

#include <functional>

namespace tarnwell {

/// How a call ended.
struct CallEnd {
  enum How {
    /// The call returned by itself.
    Returned,
    /// The call was ended because it took longer than its limit.
    TimedOut,
    /// The call was ended because of a signal.
    Interrupted,
  };
  How how = Returned;
  /// The call's return value.
  int result = 0;
  /// The signal's number; 0: none.
  int signal = 0;
  /// The call did not return although its connection was shut down, for example because it looks up a name. Its thread
  /// still uses the objects that the call refers to: the caller has to end the process without destroying them.
  bool isRunning = false;
  /// The latest known state of the connection, from before it was ended.
  CallProgress progress;
};

/// Makes `call`, which connects to the TCP port `port`. `limit`: seconds, 0 for none. SIGINT or SIGTERM ends the call;
/// the same signal again ends the process. After 250 ms, a terminal on standard error shows a line with `activity` (a
/// participle), bytes, rate and time; the line is erased at the end.
[[nodiscard]] CallEnd watchCall(const char* activity, int port, double limit, const std::function<int()>& call);

} // namespace tarnwell
