// A block of bytes that grows while it is read and then belongs to the context, without a copy.
#pragma once

#include "protocol/Context.h"
#include "protocol/FreshMemory.h"

#include <cstddef>
#include <memory>
#include <optional>

namespace tarnwell {

/// The memory of one big block. The layer above may bring its own kind, to hand the bytes on without a copy.
class BigBlock {
public:
  BigBlock() = default;
  BigBlock(const BigBlock&) = delete;
  BigBlock& operator=(const BigBlock&) = delete;
  virtual ~BigBlock() = default;

  /// Makes it `size` bytes, the first of which stay what they are. Null: out of memory, nothing has changed.
  virtual unsigned char* resize(std::size_t size) noexcept = 0;
};

/// A new one without bytes; null: out of memory.
using MakeBigBlock = std::unique_ptr<BigBlock> (*)() noexcept;

/// From now on big blocks of the context are made by `make`; without memory for that, as before.
void setBigBlocks(struct soap* soap, MakeBigBlock make);
/// The big block that the context read last, if it still has it.
const BigBlock* lastBigBlock(struct soap* soap);

struct Blocks;
struct Region;

/// The block that a context is reading. Small ones lie one behind the other in regions of address space, which go with
/// the context's objects; a big one has memory of its own. One block of a context is open at a time; one that is not
/// released leaves nothing behind.
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
  bool growBig(std::size_t least, std::size_t most);
  /// Takes what the block has over from where it was.
  void copyStart(const unsigned char* from);

  struct soap* m_soap;
  Blocks* m_blocks;                ///< null: the context has none yet
  std::unique_ptr<BigBlock> m_big; ///< null: the block lies in the region
  std::optional<FreshMemory> m_bigMemory;
  FreshMemory* m_memory = nullptr; ///< that the block lies in
  unsigned char* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_size = 0;
};

} // namespace tarnwell
