// What a call of the plug-in does on the network. The plug-in says only that a call has failed; its system calls and
// the response that it read tell why. Used by WatchedCall and Diagnosis.
//
// The plug-in calls getaddrinfo(), connect(), send() and recv() by name, and the loader finds the functions of the
// executable before those of the C library. So CallTrace.cpp defines these four: each calls the C library's function
// and notes the outcome.
#pragma once

#include <QtCore/QByteArray>

namespace tarnwell {

/// The notes of one call. When a call makes several exchanges, they are about the first one that got a response.
struct CallTrace {
  /// What getaddrinfo() returned; 0: the name of the host was found.
  int lookUpError = 0;
  /// `errno` of the last connect(); 0: connected.
  int connectError = 0;
  bool isConnected = false;
  /// `errno` of the first send() or recv() that failed.
  int transferError = 0;
  /// The kernel has taken the whole request: the call has begun to receive. Otherwise the service cannot have got all
  /// of it.
  bool isSent = false;
  /// The first 64 KiB of the response with its HTTP head, as they came.
  QByteArray response;
};

/// While it exists, `trace` gets the notes about the system calls of the thread that has constructed it.
class CallTracer {
public:
  explicit CallTracer(CallTrace& trace);
  ~CallTracer();
  CallTracer(const CallTracer&) = delete;
  CallTracer& operator=(const CallTracer&) = delete;
};

} // namespace tarnwell
