#include "protocol/FreshMemory.h"

#include <algorithm>
#include <ctime>
#include <sys/mman.h>

namespace tarnwell {
namespace {

constexpr std::uintptr_t page = 4096;
/// What has a huge page in it for certain.
constexpr std::size_t worthHuge = std::size_t{4} << 20;
/// How much is fetched ahead: many pages a call, yet few enough to be in the cache still when they are written.
constexpr std::uintptr_t step = std::uintptr_t{128} << 10;
/// The thread's time, in nanoseconds, that the 512 small pages in the place of a huge one would take.
constexpr long long dear = 1000000;

constexpr std::uintptr_t pageAt(std::uintptr_t address) { return address & ~(page - 1); }

/// A failure changes nothing: a system that cannot do this gives small pages, one by one, as ever.
void advise(std::uintptr_t begin, std::uintptr_t end, int advice) {
  if (begin < end)
    static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, advice));
}

long long threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

} // namespace

FreshMemory::FreshMemory(void* begin, std::size_t size, bool& huge)
    : m_begin(reinterpret_cast<std::uintptr_t>(begin)), m_end(m_begin + size), m_present(pageAt(m_begin)),
      m_huge(huge) {
  if (m_huge && size >= worthHuge)
    adviseAll(MADV_HUGEPAGE);
}

void FreshMemory::adviseAll(int advice) const { advise(pageAt(m_begin + page - 1), pageAt(m_end), advice); }

void FreshMemory::reach(const void* end) {
  if (reinterpret_cast<std::uintptr_t>(end) <= m_present)
    return;
  const std::uintptr_t ahead = pageAt(std::min(reinterpret_cast<std::uintptr_t>(end) + step, m_end) + page - 1);
  const long long start = m_huge ? threadTime() : 0;
  advise(m_present, ahead, MADV_POPULATE_WRITE);
  m_present = ahead;
  if (m_huge && threadTime() - start > dear) {
    m_huge = false;
    adviseAll(MADV_NOHUGEPAGE);
  }
}

} // namespace tarnwell
