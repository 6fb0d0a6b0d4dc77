// The memory that the bytes of a block are read into, and how much of it is asked for. One thread, as the context.
#pragma once

#include "protocol/binding/Receiver.h"

namespace tarnwell {

/// Memory of a context, which frees it with its objects.
class ContextMemory : public Receiver {
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
  explicit OpenBlock(Receiver& memory) : m_memory(memory) {}
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
  Receiver& m_memory;
  unsigned char* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_size = 0;
};

} // namespace tarnwell
