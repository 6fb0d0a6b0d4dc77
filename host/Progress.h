// Shows on a terminal that a blocking call is running and for how long. Nothing when standard error is no terminal.
// Used around every call of the service, from one thread.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tarnwell {

/// From construction to destruction: one line on standard error, redrawn several times a second by a thread of its own
/// and wiped at the end. Calls that end quickly show nothing.
class Progress {
public:
  /// `activity` is a literal such as "downloading the map".
  explicit Progress(const char* activity);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

private:
  void draw(const char* activity);

  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_isEnded = false;
  std::thread m_thread;
};

} // namespace tarnwell
