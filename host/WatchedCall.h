// Makes a blocking call in a thread of its own: meanwhile the terminal shows its progress, and a time limit or Ctrl-C
// can end it. Used for every call of the service, from one thread.
#pragma once

#include "host/CallTrace.h"
#include "service/CallMonitor.h"

#include <QtCore/QString>
#include <functional>

namespace tarnwell {

/// What the terminal shows while a call runs.
struct Activity {
  /// A participle: "listing maps".
  QString text;
  /// The bytes that the call sends at least; 0: not known. With it the terminal shows percent and remaining time.
  qint64 size = 0;
};

/// When a call is ended, in seconds; 0: never.
struct TimeLimits {
  /// After the call began.
  double whole = 0;
  /// After the last byte was sent or received.
  double stall = 0;
};

/// How a call ended.
struct CallEnd {
  enum How {
    /// The call returned by itself.
    Returned,
    /// The call was ended because it took longer than TimeLimits::whole.
    TimedOut,
    /// The call was ended because no byte was sent or received for TimeLimits::stall.
    Stalled,
    /// The call was ended because of a signal, or not even begun.
    Interrupted,
  };
  How how = Returned;
  /// The call's return value.
  int result = 0;
  /// The number of a signal that has arrived; 0: none. When the call returned by itself, the signal came too late.
  int signal = 0;
  /// The call did not return although its connection was shut down, for example because it looks up a name. Its thread
  /// still uses the objects that the call refers to: the caller has to end the process without destroying them.
  bool isRunning = false;
  /// The latest known state of the connection, from before it was ended.
  CallProgress progress;
  /// What the call did on the network; empty while it is running.
  CallTrace trace;
};

/// Makes `call`, which connects to the TCP port `port`. SIGINT or SIGTERM ends the call; the same signal again ends the
/// process. After 250 ms, a terminal on standard error shows a line with the activity, bytes, rate and time; the line
/// is erased at the end.
[[nodiscard]] CallEnd watchCall(const Activity& activity, int port, const TimeLimits& limits,
                                const std::function<int()>& call);

} // namespace tarnwell
