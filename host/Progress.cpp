#include "host/Progress.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace tarnwell {

Progress::Progress(const char* activity) {
  if (isatty(STDERR_FILENO) != 0)
    m_thread = std::thread([this, activity] { draw(activity); });
}

Progress::~Progress() {
  if (!m_thread.joinable())
    return;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isEnded = true;
  }
  m_ended.notify_one();
  m_thread.join();
}

void Progress::draw(const char* activity) {
  constexpr std::chrono::milliseconds period(250);
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock<std::mutex> lock(m_mutex);
  while (!m_ended.wait_for(lock, period, [this] { return m_isEnded; })) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "\r%s ... %.1f s\033[K", activity, elapsed.count());
  }
  std::fputs("\r\033[K", stderr);
}

} // namespace tarnwell
