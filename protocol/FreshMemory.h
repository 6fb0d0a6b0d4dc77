// Fresh memory, whose pages are fetched before they are written: page faults cost more than bytes there.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnwell {

/// Memory that is about to be used for the first time, from its start to its end.
class FreshMemory {
public:
  /// Asks for huge pages as long as `huge` is set, which the first one that is dear clears: a virtual machine may have
  /// to fetch it from its host first, some ten times as long, while small pages are still at hand. On a machine without
  /// huge pages nothing changes.
  FreshMemory(void* begin, std::size_t size, bool& huge);

  /// Fetches the pages up to `end`, and a little ahead.
  void reach(const void* end);

private:
  void adviseAll(int advice) const;

  std::uintptr_t m_begin;
  std::uintptr_t m_end;
  std::uintptr_t m_present; ///< where the fetched pages end
  bool& m_huge;
};

} // namespace tarnwell
