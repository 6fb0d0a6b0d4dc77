#include "protocol/HugePages.h"

#include <cstdint>
#include <ctime>
#include <sys/mman.h>

namespace tarnwell {

HugePages::HugePages(void* begin, std::size_t size, bool wanted) {
  constexpr std::uintptr_t page = 4096;
  const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(begin) + page - 1) & ~(page - 1);
  const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(begin) + size) & ~(page - 1);
  m_begin = reinterpret_cast<void*>(first);
  m_size = last > first ? last - first : 0;
  m_wanted = wanted && madvise(m_begin, m_size, MADV_HUGEPAGE) == 0;
}

long long HugePages::threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

void HugePages::giveUp() {
  m_wanted = false;
  static_cast<void>(madvise(m_begin, m_size, MADV_NOHUGEPAGE));
}

} // namespace tarnwell
