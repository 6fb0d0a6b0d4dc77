// Finds out why a call failed: the plug-in only says that it failed. Any thread.
#pragma once

#include "host/Settings.h"

namespace tarnwell {

/// What the check found.
struct Diagnosis {
  /// The service answers with SOAP and without a fault: neither network nor address is the cause.
  bool isAnswering = false;
  /// Why calls fail, one clause; printable. Empty when the service answers.
  QString cause;
  /// What to try; may be empty.
  QString advice;
};

/// The credentials for the proxy. With an empty user none are sent.
struct ProxyLogin {
  QString user;
  QString password;
};

/// Connects to `address` as a call does and posts an empty request of `operation`, its name on the wire. The request
/// has no user name and password, so that it changes nothing on the service; blanks extend it to `size` bytes. Takes at
/// most 5 s to connect, unless the name look-up takes longer, and 5 s for request and answer.
[[nodiscard]] Diagnosis diagnose(const ServiceAddress& address, const ProxyLogin& login, const char* operation,
                                 qint64 size);

} // namespace tarnwell
