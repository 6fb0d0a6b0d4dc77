#include "localservice/MemoryBudget.h"

#include <algorithm>
#include <chrono>

namespace localservice {

namespace {

constexpr std::chrono::minutes patience{5};

} // namespace

bool MemoryBudget::take(std::uint64_t bytes) {
  std::unique_lock<std::mutex> lock(mutex);
  const auto place = waiting.insert(waiting.end(), bytes);
  const bool isServed =
      changed.wait_for(lock, patience, [this, place] { return place == waiting.begin() && *place <= unused; });
  waiting.erase(place);
  if (isServed)
    unused -= bytes;
  changed.notify_all();
  return isServed;
}

void MemoryBudget::giveBack(std::uint64_t bytes) {
  const std::lock_guard<std::mutex> lock(mutex);
  unused += bytes;
  changed.notify_all();
}

bool Reservation::add(std::uint64_t bytes) {
  const std::uint64_t wanted = std::min(bytes, budget.size - held);
  if (bytes <= freeOfCharge)
    return true;
  if (!budget.take(wanted))
    return false;
  held += wanted;
  return true;
}

void Reservation::release() {
  if (held != 0)
    budget.giveBack(held);
  held = 0;
}

} // namespace localservice
