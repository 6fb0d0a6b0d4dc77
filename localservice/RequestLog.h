// The request log: one line per request on standard error. Any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace localservice {

/// One line of the log. Empty texts are shown as "-". It has no password.
struct LogEntry {
  std::string client; ///< address and port
  std::string operation;
  std::string user;
  std::string outcome; ///< name of an access or login value, "drop", or an HTTP status
  std::chrono::milliseconds duration{0};
  std::uint64_t received = 0; ///< bytes
  std::uint64_t sent = 0;     ///< bytes
};

/// `entry` with the current time, in columns separated by tabs, and the end of the line. UTF-8.
std::string line(const LogEntry& entry);
/// Writes this line.
void log(const LogEntry& entry);

} // namespace localservice
