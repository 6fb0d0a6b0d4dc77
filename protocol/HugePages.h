// Fresh memory in huge pages, for as long as these are worth it.
#pragma once

#include <algorithm>
#include <cstddef>

namespace tarnwell {

/// Asks for huge pages in memory that is about to be used for the first time: page faults cost more than bytes there.
/// On a machine without huge pages nothing changes.
class HugePages {
public:
  /// What one watch() should touch at most, to give up in time: 1 MiB.
  static constexpr std::size_t step = std::size_t{1} << 20;

  /// Of the memory at `begin`; `wanted` false: small pages from the beginning.
  HugePages(void* begin, std::size_t size, bool wanted);

  /// Whether huge pages were worth it so far.
  bool wanted() const { return m_wanted; }
  /// Runs `touch`, which touches the next step of the memory, and gives huge pages up if it takes too long: a virtual
  /// machine may have to fetch them from its host first, some ten times as long, while small pages are still at hand.
  template <class Touch> void watch(Touch touch) {
    const long long start = m_wanted ? threadTime() : 0;
    touch();
    if (m_wanted && threadTime() - start > dear)
      giveUp();
  }

private:
  /// The thread's time, in nanoseconds, that the 512 small pages in the place of a huge one would take.
  static constexpr long long dear = 1000000;

  static long long threadTime();
  void giveUp();

  void* m_begin;
  std::size_t m_size;
  bool m_wanted;
};

/// Fills a fresh block of `size` bytes at `to` by calls of `fill(at, count)`, for all of it from its start to its end.
/// A block that has a huge page in it for certain asks for huge pages.
template <class Fill> void fillFresh(void* to, std::size_t size, Fill fill) {
  // Blocks from here on malloc maps anew each time (M_MMAP_THRESHOLD of mallopt(3)), mostly in memory that the block
  // before gave back: huge pages pay from the second one on, however dear the first are. So all is one step.
  constexpr std::size_t mappedAnew = 32 * HugePages::step;
  const std::size_t step = size < mappedAnew ? HugePages::step : size;
  HugePages pages(to, size, size >= 4 * HugePages::step);
  for (std::size_t at = 0; at < size; at += step)
    pages.watch([&] { fill(at, std::min(step, size - at)); });
}

} // namespace tarnwell
