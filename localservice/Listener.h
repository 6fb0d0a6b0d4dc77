// A TCP socket that waits for connections. Used by the server; accept() may be called from several threads.
#pragma once

#include <string>

namespace localservice {

class Listener {
public:
  /// Listens on `host` (a name or an address) and `port` ("0": a free one). Throws std::runtime_error, with a text
  /// for people.
  Listener(const std::string& host, const std::string& port);
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener();

  /// The port that it got.
  int port() const;
  /// Waits for the next connection. Returns its socket, owned by the caller, or -1 after close() or when the system
  /// could not give one.
  int accept() const;
  /// Makes every accept(), also those that wait, return -1.
  void close();

private:
  int socket = -1;
};

} // namespace localservice
