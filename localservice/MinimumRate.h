// The minimum rate of a transfer: a slower client would occupy a thread for too long. One thread.
#pragma once

#include <chrono>
#include <cstddef>

namespace localservice {

/// Requires 160 KiB in each period of ten seconds. The first period begins with the construction, and each other one
/// when the 160 KiB were moved.
class MinimumRate {
public:
  /// Time that is left of the period; 0 when the transfer is too slow.
  int millisecondsLeft() const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
  }
  /// Counts `size` bytes that were received or sent.
  void moved(std::size_t size) {
    bytes += size;
    if (bytes >= leastBytes)
      *this = MinimumRate();
  }

private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds period{10};
  static constexpr std::size_t leastBytes = std::size_t{160} << 10;

  Clock::time_point end = Clock::now() + period;
  std::size_t bytes = 0;
};

} // namespace localservice
