// Bounds the memory that large requests and responses take together: whoever finds none free waits. Used by
// HttpConnection for requests and by the operations for responses. Any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>

namespace localservice {

/// The memory of all requests.
class MemoryBudget {
public:
  /// `bytes` is the size of the budget.
  explicit MemoryBudget(std::uint64_t bytes) : size(bytes), unused(bytes) {}

  /// Waits until `bytes` are free and everybody who came before has been served. False: five minutes were not enough.
  [[nodiscard]] bool take(std::uint64_t bytes);
  void giveBack(std::uint64_t bytes);

  const std::uint64_t size;

private:
  std::mutex mutex;
  std::condition_variable changed;
  std::uint64_t unused;
  std::list<std::uint64_t> waiting; ///< what each wants, in the order of their coming
};

/// What one request holds of the budget, until the end of its life. One thread.
class Reservation {
public:
  static constexpr std::uint64_t freeOfCharge = std::uint64_t{1} << 20; ///< bytes

  explicit Reservation(MemoryBudget& memoryBudget) : budget(memoryBudget) {}
  ~Reservation() { release(); }
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;

  /// Adds `bytes`, as far as the whole budget has them. Up to freeOfCharge nothing is counted: small requests never
  /// wait for large ones. False: see MemoryBudget::take().
  [[nodiscard]] bool add(std::uint64_t bytes);
  /// Gives everything back.
  void release();

private:
  MemoryBudget& budget;
  std::uint64_t held = 0;
};

} // namespace localservice
