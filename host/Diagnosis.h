// Finds out why a call failed, of which the plug-in says only that it did. Any thread.
#pragma once

#include "host/Settings.h"

namespace tarnwell {

/// What the check found.
struct Diagnosis {
  /// The address answers with SOAP and without a fault: the cause is not in the way to the service.
  bool isAnswering = false;
  /// Why calls fail, one clause; printable. Empty when it answers.
  QString cause;
  /// What to try; empty when the cause says it all.
  QString advice;
};

/// The proxy's credentials; with an empty user none are sent.
struct ProxyLogin {
  QString user;
  QString password;
};

/// Connects to `address` as a call does and posts an empty `operation` (its name on the wire) without the user's name
/// and password, filled up with blanks to `size` bytes, so that nothing is changed on the service. Takes up to some 5 s
/// beside the name look-up.
[[nodiscard]] Diagnosis diagnose(const ServiceAddress& address, const ProxyLogin& login, const char* operation,
                                 qint64 size);

} // namespace tarnwell
