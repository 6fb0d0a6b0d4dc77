#include "host/WatchedCall.h"

#include "host/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>
#include <memory>
#include <thread>
#include <unistd.h>

namespace tarnwell {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::chrono::milliseconds period(50); // between two checks of the call
/// Time for the call to return after its connection was shut down.
constexpr Seconds patience(0.5);

volatile std::sig_atomic_t caughtSignal = 0;

/// While it exists, the first SIGINT and the first SIGTERM only set `caughtSignal`.
class SignalCatcher {
public:
  SignalCatcher() {
    caughtSignal = 0;
    struct sigaction action = {};
    action.sa_handler = [](int number) { caughtSignal = number; };
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (size_t i = 0; i < std::size(signals); i++) {
      sigaction(signals[i], nullptr, &m_before[i]);
      if (m_before[i].sa_handler != SIG_IGN) // a signal that the parent process ignores stays ignored
        sigaction(signals[i], &action, nullptr);
    }
  }
  ~SignalCatcher() {
    for (size_t i = 0; i < std::size(signals); i++)
      sigaction(signals[i], &m_before[i], nullptr);
  }
  SignalCatcher(const SignalCatcher&) = delete;
  SignalCatcher& operator=(const SignalCatcher&) = delete;

private:
  static constexpr int signals[] = {SIGINT, SIGTERM};
  struct sigaction m_before[std::size(signals)] = {};
};

/// The progress line on the terminal.
class ProgressLine {
public:
  explicit ProgressLine(const char* activity) : m_activity(activity) {}
  ~ProgressLine() {
    if (m_isDrawn)
      std::fputs("\r\033[K", stderr);
  }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// Has to be called once per period.
  void update(const CallProgress& progress, Seconds elapsed) {
    constexpr Seconds quiet(0.25);
    // A map travels in one direction; the other one has only a head and a small envelope.
    const std::int64_t bytes = std::max(progress.acknowledged, progress.received);
    std::int64_t& oldest = m_recent[m_next++ % m_recent.size()];
    const auto rate = static_cast<double>(bytes - oldest) / std::min(elapsed, window).count();
    oldest = bytes;
    if (!m_isTerminal || elapsed < quiet || m_next % 4 != 0)
      return;
    constexpr std::int64_t small = 16384;
    QString line = m_activity;
    if (progress.phase == CallProgress::Connecting)
      line += ", connecting";
    if (bytes > small)
      line += QString(", %1, %2/s").arg(humanSize(bytes), humanSize(static_cast<qint64>(std::max(rate, 0.0))));
    std::fprintf(stderr, "\r%s, %.1f s\033[K", line.toUtf8().constData(), elapsed.count());
    m_isDrawn = true;
  }

private:
  static constexpr Seconds window{2};
  const char* m_activity;
  const bool m_isTerminal = isatty(STDERR_FILENO) != 0;
  bool m_isDrawn = false;
  /// Bytes at each period of the last two seconds.
  std::array<std::int64_t, 40> m_recent = {};
  size_t m_next = 0;
};

} // namespace

CallEnd watchCall(const char* activity, int port, double limit, const std::function<int()>& call) {
  // Shared with the thread, which may run longer than this function.
  const auto monitor = std::make_shared<CallMonitor>(port);
  std::packaged_task<int()> task([monitor, call] {
    const CallMonitor::Watch watch(*monitor);
    return call();
  });
  std::future<int> returned = task.get_future();
  const SignalCatcher catcher;
  ProgressLine line(activity);
  CallEnd end;
  const Clock::time_point start = Clock::now();
  Clock::time_point ended;
  std::thread thread(std::move(task));
  while (returned.wait_for(period) != std::future_status::ready) {
    const Clock::time_point now = Clock::now();
    if (end.how == CallEnd::Returned) {
      end.progress = monitor->progress();
      line.update(end.progress, now - start);
      end.signal = caughtSignal;
      if (end.signal == 0 && (limit == 0 || Seconds(now - start).count() < limit))
        continue;
      end.how = end.signal != 0 ? CallEnd::Interrupted : CallEnd::TimedOut;
      ended = now;
    }
    monitor->endCall();
    if (now - ended > patience) {
      thread.detach();
      end.isRunning = true;
      return end;
    }
  }
  thread.join();
  end.result = returned.get();
  return end;
}

} // namespace tarnwell
