// A block of bytes that grows while it is read and then belongs to the context, without a copy.
#pragma once

#include "protocol/Context.h"

#include <cstddef>

namespace tarnwell {

/// Owns its bytes until release(). Big blocks grow by remapping, and take their pages from the system many at a time:
/// page faults, not bytes, are what a big map costs.
class Block {
public:
  Block() = default;
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block();

  std::size_t size() const { return m_size; }
  /// Bytes that may be written at end().
  std::size_t room() const { return m_capacity - m_size; }
  /// Where `size` bytes may be written, which grow() made room for.
  unsigned char* end(std::size_t size);
  /// Counts `size` bytes that were written at end().
  void extend(std::size_t size) { m_size += size; }

  /// Makes room for `needed` bytes or more. `likely` is how large the block may get in the end; it is never trusted,
  /// but spares growing in steps when the block turns out to be big. False: out of memory.
  [[nodiscard]] bool grow(std::size_t needed, std::size_t likely);
  /// Hands the bytes to the context, which frees them with its objects. Null: out of memory, with the context's error.
  [[nodiscard]] unsigned char* release(struct soap* soap);

private:
  unsigned char* m_bytes = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
  std::size_t m_present = 0; ///< of a big block: bytes whose pages were asked for already
};

} // namespace tarnwell
