// Fresh memory, whose pages are fetched before they are written: page faults cost more than bytes there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnwell {

/// Whether fresh memory is asked for in huge pages. On a machine without them nothing changes.
enum class HugePages {
  None,
  /// Until one of them is dear: a virtual machine may have to fetch it from its host first, some ten times as long,
  /// while small pages are still at hand.
  WhileCheap,
  Always,
};

/// Memory that is about to be used for the first time, from its start to its end.
class FreshMemory {
public:
  FreshMemory(void* begin, std::size_t size, HugePages huge);

  /// Fetches the pages up to `end`, and a little ahead.
  void reach(const void* end);
  /// What it asks for now: None after huge pages were dear.
  HugePages huge() const { return m_huge; }

private:
  std::uintptr_t m_begin;
  std::uintptr_t m_end;
  std::uintptr_t m_present; ///< where the fetched pages end
  HugePages m_huge;
};

} // namespace tarnwell
