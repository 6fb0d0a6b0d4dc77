// A block of bytes that grows while it is read and then belongs to the context, without a copy.
#pragma once

#include "protocol/Context.h"

#include <cstddef>

namespace tarnwell {

struct Region;

/// The open end of the memory that a context has for blocks: regions of address space, filled block after block, which
/// go with the context's objects. Their pages come from the system many at a time, because page faults, not bytes, are
/// what a big answer costs. One block of a context is open at a time; one that is not released leaves nothing behind.
class Block {
public:
  explicit Block(struct soap* soap);
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  std::size_t size() const { return m_size; }
  /// Bytes that may be written at end().
  std::size_t room() const;
  /// Where `size` bytes may be written, which grow() made room for.
  unsigned char* end(std::size_t size);
  /// Counts `size` bytes that were written at end().
  void extend(std::size_t size) { m_size += size; }

  /// Makes room for `needed` bytes or more. `likely` is how many more may come in the end; it is never trusted, but
  /// spares moving the block when it turns out to be big. False: out of memory.
  [[nodiscard]] bool grow(std::size_t needed, std::size_t likely);
  /// Hands the bytes to the context.
  unsigned char* release();

private:
  struct soap* m_soap;
  Region* m_region;    ///< null: the context has none yet
  std::size_t m_start; ///< offset in the region
  std::size_t m_size = 0;
};

} // namespace tarnwell
