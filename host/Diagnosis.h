// Tells why a call failed, from what it did on the network. Pure function, any thread.
#pragma once

#include "host/CallTrace.h"
#include "host/Settings.h"

namespace tarnwell {

struct Diagnosis {
  /// Why the call failed, one clause; printable.
  QString cause;
  /// What to try.
  QString advice;
  /// The call may succeed when it is repeated.
  bool isTemporary = false;
  /// The service has answered that it does not carry the request out.
  bool isRefused = false;
  /// The service works, as far as its response tells: neither a fault nor an error of its own.
  bool isAnswered = false;
};

/// `address`: what the call connected to. Not for a call that a time limit or a signal has ended.
[[nodiscard]] Diagnosis diagnose(const CallTrace& trace, const ServiceAddress& address);

} // namespace tarnwell
