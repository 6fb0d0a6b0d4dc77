#include "protocol/FreshMemory.h"

#include <algorithm>
#include <ctime>
#include <sys/mman.h>

namespace tarnwell {
namespace {

constexpr std::uintptr_t page = 4096;
/// How much is fetched ahead: many pages a call, yet few enough to be in the cache still when they are written.
constexpr std::uintptr_t step = std::uintptr_t{128} << 10;
/// The thread's time, in nanoseconds, that the 512 small pages in the place of a huge one would take.
constexpr long long dear = 1000000;

constexpr std::uintptr_t pageAt(std::uintptr_t address) { return address & ~(page - 1); }

/// A failure changes nothing: a system that cannot do this gives small pages, one by one, as ever.
bool advise(std::uintptr_t begin, std::uintptr_t end, int advice) {
  return begin < end && madvise(reinterpret_cast<void*>(begin), end - begin, advice) == 0;
}

long long threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

} // namespace

FreshMemory::FreshMemory(void* begin, std::size_t size, HugePages huge)
    : m_begin(reinterpret_cast<std::uintptr_t>(begin)), m_end(m_begin + size), m_present(pageAt(m_begin)),
      m_huge(huge) {
  if (m_huge != HugePages::None && !advise(pageAt(m_begin + page - 1), pageAt(m_end), MADV_HUGEPAGE))
    m_huge = HugePages::None;
}

void FreshMemory::reach(const void* end) {
  if (reinterpret_cast<std::uintptr_t>(end) <= m_present)
    return;
  const std::uintptr_t ahead = pageAt(std::min(reinterpret_cast<std::uintptr_t>(end) + step, m_end) + page - 1);
  const long long start = m_huge == HugePages::WhileCheap ? threadTime() : 0;
  advise(m_present, ahead, MADV_POPULATE_WRITE);
  m_present = ahead;
  if (m_huge == HugePages::WhileCheap && threadTime() - start > dear) {
    m_huge = HugePages::None;
    advise(pageAt(m_begin + page - 1), pageAt(m_end), MADV_NOHUGEPAGE);
  }
}

} // namespace tarnwell
