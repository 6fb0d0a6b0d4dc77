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
    for (size_t i = 0; i < std::size(caught); i++) {
      sigaction(caught[i], nullptr, &m_before[i]);
      if (m_before[i].sa_handler != SIG_IGN) // a signal that the parent process ignores stays ignored
        sigaction(caught[i], &action, nullptr);
    }
  }
  ~SignalCatcher() {
    for (size_t i = 0; i < std::size(caught); i++)
      sigaction(caught[i], &m_before[i], nullptr);
  }
  SignalCatcher(const SignalCatcher&) = delete;
  SignalCatcher& operator=(const SignalCatcher&) = delete;

private:
  static constexpr int caught[] = {SIGINT, SIGTERM};
  struct sigaction m_before[std::size(caught)] = {};
};

/// The progress line on the terminal.
class ProgressLine {
public:
  explicit ProgressLine(const Activity& activity) : m_activity(activity) {}
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
    QString line = m_activity.text;
    if (progress.phase == CallProgress::Connecting)
      line += ", connecting";
    if (m_activity.size > small)
      line += QString(", %1 %").arg(std::min<qint64>(bytes * 100 / m_activity.size, 100));
    if (bytes > small)
      line += QString(", %1, %2/s").arg(humanSize(bytes), humanSize(static_cast<qint64>(std::max(rate, 0.0))));
    line += QString(", %1 s").arg(elapsed.count(), 0, 'f', 1);
    if (bytes > small && bytes < m_activity.size && rate > 1)
      line += QString(", %1 s left").arg(static_cast<double>(m_activity.size - bytes) / rate, 0, 'f', 0);
    std::fprintf(stderr, "\r%s\033[K", line.toUtf8().constData());
    m_isDrawn = true;
  }

private:
  static constexpr Seconds window{2};
  const Activity& m_activity;
  const bool m_isTerminal = isatty(STDERR_FILENO) != 0;
  bool m_isDrawn = false;
  /// Bytes at each period of the last two seconds.
  std::array<std::int64_t, 40> m_recent = {};
  size_t m_next = 0;
};

/// Tells when a call has to be ended.
class Limiter {
public:
  explicit Limiter(const TimeLimits& limits) : m_limits(limits) {}

  /// Has to be called once per period, with the seconds since the call began.
  CallEnd::How check(const CallProgress& progress, double elapsed) {
    if (caughtSignal != 0)
      return CallEnd::Interrupted;
    if (const std::int64_t bytes = progress.acknowledged + progress.received; bytes != m_bytes) {
      m_bytes = bytes;
      m_lastByte = elapsed;
    }
    if (m_limits.whole > 0 && elapsed >= m_limits.whole)
      return CallEnd::TimedOut;
    return m_limits.stall > 0 && elapsed - m_lastByte >= m_limits.stall ? CallEnd::Stalled : CallEnd::Returned;
  }

private:
  const TimeLimits& m_limits;
  std::int64_t m_bytes = 0;
  double m_lastByte = 0;
};

/// Shared with the thread of the call, which may run longer than watchCall().
struct Shared {
  explicit Shared(int port) : monitor(port) {}
  CallMonitor monitor;
  CallTrace trace;
};

/// watchCall(), without a signal that arrives too late.
CallEnd watchUntilEnd(const Activity& activity, int port, const TimeLimits& limits, const std::function<int()>& call) {
  const auto shared = std::make_shared<Shared>(port);
  std::packaged_task<int()> task([shared, call] {
    const CallTracer tracer(shared->trace);
    const CallMonitor::Watch watch(shared->monitor);
    return call();
  });
  std::future<int> returned = task.get_future();
  const SignalCatcher catcher;
  ProgressLine line(activity);
  Limiter limiter(limits);
  CallEnd end;
  const Clock::time_point start = Clock::now();
  Clock::time_point ended;
  std::thread thread(std::move(task));
  while (returned.wait_for(period) != std::future_status::ready) {
    const Clock::time_point now = Clock::now();
    if (end.how == CallEnd::Returned) {
      end.progress = shared->monitor.progress();
      line.update(end.progress, now - start);
      end.how = limiter.check(end.progress, Seconds(now - start).count());
      if (end.how == CallEnd::Returned)
        continue;
      ended = now;
    }
    shared->monitor.endCall();
    if (now - ended > patience) {
      thread.detach();
      end.isRunning = true;
      return end;
    }
  }
  thread.join();
  end.result = returned.get();
  end.trace = shared->trace;
  return end;
}

} // namespace

CallEnd watchCall(const Activity& activity, int port, const TimeLimits& limits, const std::function<int()>& call) {
  CallEnd end = watchUntilEnd(activity, port, limits, call);
  end.signal = caughtSignal; // the handler is gone: from now on a signal ends the process
  return end;
}

} // namespace tarnwell
