// Makes a blocking call in a thread of its own, so that it can be shown on the terminal, limited in time and ended by
// Ctrl-C. Used around every call of the service, from one thread.
#pragma once

#include "host/CallMonitor.h"

#include <functional>

namespace tarnwell {

/// How a call ended.
struct CallEnd {
  enum How {
    /// By itself; its result counts.
    Returned,
    /// It took longer than its limit and was ended.
    TimedOut,
    /// A signal came, and it was ended.
    Interrupted,
  };
  How how = Returned;
  /// The call's return value.
  int result = 0;
  /// The signal's number.
  int signal = 0;
  /// The call did not return when its connection was shut down, for example because it looks up a name. Its thread
  /// still uses what the call refers to: the caller has to end the process without leaving the scope of that.
  bool isRunning = false;
  /// The state of the connection when it was ended, or at the latest look.
  CallProgress progress;
};

/// Makes `call`, whose exchange goes to the TCP port `port`. `limit`: seconds, 0 for none. SIGINT and SIGTERM end it; a
/// second one ends the process. When standard error is a terminal, it has a line with `activity` (a participle), bytes,
/// rate and time from 250 ms on, which is wiped at the end.
[[nodiscard]] CallEnd watchCall(const char* activity, int port, double limit, const std::function<int()>& call);

} // namespace tarnwell
