// The memory that the bytes of a block are read into, and how much of it is asked for. One thread, as the context.
#pragma once

#include "protocol/runtime/RuntimeInternals.h"

#include <cstddef>

namespace tarnwell {

/// Memory for the bytes of blocks. One block at a time is open: its bytes are being read.
class BlockMemory {
public:
  BlockMemory() = default;
  BlockMemory(const BlockMemory&) = delete;
  BlockMemory& operator=(const BlockMemory&) = delete;
  virtual ~BlockMemory() = default;

  /// Gives the open block room for `capacity` bytes, or opens one; keeps the `size` bytes that were written. Returns
  /// where the bytes lie. Null: out of memory; the block is unchanged.
  virtual unsigned char* reserve(std::size_t capacity, std::size_t size) noexcept = 0;
  /// Closes the open block, which has `size` bytes, and keeps it; `shrink`: without the room that is left. Returns
  /// where the bytes lie from now on. Null: out of memory.
  virtual unsigned char* keep(std::size_t size, bool shrink) noexcept = 0;
  /// Frees the open block.
  virtual void discard() noexcept = 0;

  /// The answer has an element with an id, so that several references may lead to one block: from then on blocks are
  /// read into the context's own memory.
  bool hasReferences = false;
};

/// Lets the context read blocks into `memory`; null: into its own memory. Requires: `memory` outlives the context's
/// use.
inline void setBlockMemory(struct soap* soap, BlockMemory* memory) { userData(soap, UserData::BlockMemory) = memory; }
inline BlockMemory* blockMemory(struct soap* soap) {
  return static_cast<BlockMemory*>(userData(soap, UserData::BlockMemory));
}

/// Memory of a context, which frees it with its objects.
class ContextMemory : public BlockMemory {
public:
  explicit ContextMemory(struct soap* soap) : m_soap(soap) {}
  ~ContextMemory() override { ContextMemory::discard(); }

  unsigned char* reserve(std::size_t capacity, std::size_t size) noexcept override;
  unsigned char* keep(std::size_t size, bool shrink) noexcept override;
  void discard() noexcept override;

private:
  struct soap* m_soap;
  unsigned char* m_bytes = nullptr;
};

/// The block that is being read: decides how much memory is asked for.
class OpenBlock {
public:
  explicit OpenBlock(BlockMemory& memory) : m_memory(memory) {}
  OpenBlock(const OpenBlock&) = delete;
  OpenBlock& operator=(const OpenBlock&) = delete;
  ~OpenBlock() {
    if (m_bytes)
      m_memory.discard();
  }

  std::size_t size() const { return m_size; }
  /// Bytes that may be written at end().
  std::size_t room() const { return m_capacity - m_size; }
  unsigned char* end() { return m_bytes + m_size; }
  /// Counts `size` bytes that were written at end().
  void extend(std::size_t size) { m_size += size; }

  /// Makes room for `needed` bytes or more. `expected` is how many more may come; it is only asked for, never touched,
  /// and what the memory refuses is tried with less. False: too large, or out of memory.
  [[nodiscard]] bool grow(std::size_t needed, std::size_t expected);
  /// Closes the block; the memory keeps its bytes. Null: too large, or out of memory.
  unsigned char* close();

private:
  BlockMemory& m_memory;
  unsigned char* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_size = 0;
};

} // namespace tarnwell
