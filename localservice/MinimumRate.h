// The least rate of a transfer: clients that are slower hold a thread for too long. One thread.
#pragma once

#include <chrono>
#include <cstddef>

namespace localservice {

/// Counts time from its construction: 160 KiB have to be moved in each period of ten seconds.
class Pace {
public:
  /// What is left of the period; 0 when the transfer is too slow.
  int millisecondsLeft() const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
  }
  void moved(std::size_t size) {
    bytes += size;
    if (bytes >= leastBytes)
      *this = Pace();
  }

private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds period{10};
  static constexpr std::size_t leastBytes = std::size_t{160} << 10;

  Clock::time_point end = Clock::now() + period;
  std::size_t bytes = 0;
};

} // namespace localservice
