// A block of bytes that grows while it is read and then belongs to the context, without a copy.
#pragma once

#include "protocol/Context.h"
#include "protocol/FreshMemory.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace tarnwell {

/// The memory of one big block, of the layer above, which can hand the bytes on without a copy.
class BigBlock {
public:
  BigBlock() = default;
  BigBlock(const BigBlock&) = delete;
  BigBlock& operator=(const BigBlock&) = delete;
  virtual ~BigBlock() = default;

  /// Makes it `size` bytes, the first of which stay what they are. Null: out of memory.
  virtual unsigned char* resize(std::size_t size) noexcept = 0;
};

/// A new one without bytes; null: out of memory.
using MakeBigBlock = std::unique_ptr<BigBlock> (*)() noexcept;

/// From now on the context's big blocks are made by `make`; without memory for that, they are its own, as before.
void setBigBlocks(struct soap* soap, MakeBigBlock make);
/// The one of them that the context read last; null: none, or gone with the context's objects.
const BigBlock* lastBigBlock(struct soap* soap);

struct Blocks;

/// The block that a context is reading. Blocks lie one behind the other in regions of address space, unless the layer
/// above has memory for the big ones. One block of a context is open at a time; one that is not released leaves nothing
/// behind.
class Block {
public:
  explicit Block(struct soap* soap);
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  std::size_t size() const { return m_size; }
  /// Bytes that may be written at end().
  std::size_t room() const { return m_capacity - m_size; }
  /// Where `size` bytes may be written, which grow() made room for.
  unsigned char* end(std::size_t size);
  /// Counts `size` bytes that were written at end().
  void extend(std::size_t size) { m_size += size; }

  /// Makes room for `needed` bytes or more. `likely` is how many more may come in the end; it is never trusted, but
  /// spares moving the block when it turns out to be big. False: out of memory.
  [[nodiscard]] bool grow(std::size_t needed, std::size_t likely);
  /// Hands the bytes to the context. Null: out of memory.
  unsigned char* release();

private:
  bool growBig(std::size_t size);
  /// Takes along what was read so far.
  void moveTo(unsigned char* bytes);

  struct soap* m_soap;
  Blocks* m_blocks;                ///< null: out of memory
  std::unique_ptr<BigBlock> m_big; ///< null: the block lies in the region
  std::optional<FreshMemory> m_bigMemory;
  FreshMemory* m_memory = nullptr; ///< that the block lies in
  unsigned char* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_size = 0;
};

} // namespace tarnwell
