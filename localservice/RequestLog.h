// The log of requests, one line each on standard error. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace localservice {

/// What is logged of a request. Empty texts are shown as "-"; there is no password in it.
struct LogEntry {
  std::string client; ///< address and port
  std::string operation;
  std::string user;
  std::string outcome; ///< of the operation, or an HTTP status
  std::chrono::milliseconds duration{0};
  std::uint64_t received = 0; ///< bytes
  std::uint64_t sent = 0;     ///< bytes
};

/// Writes `entry` with the present time, in columns that tabs divide.
void log(const LogEntry& entry);

} // namespace localservice
