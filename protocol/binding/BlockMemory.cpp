#include "protocol/binding/BlockMemory.h"

#include "protocol/binding/BuiltinTypes.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tarnwell {

unsigned char* ContextMemory::reserve(std::size_t capacity, std::size_t) noexcept {
  void* const bytes = std::realloc(m_bytes, capacity);
  if (!bytes)
    return nullptr;
  return m_bytes = static_cast<unsigned char*>(bytes);
}

unsigned char* ContextMemory::keep(std::size_t size, bool shrink) noexcept {
  if (shrink)
    reserve(size, size);
  void* const bytes = std::exchange(m_bytes, nullptr);
  constexpr auto destroy = [](void* kept, int, bool) { std::free(kept); };
  return static_cast<unsigned char*>(own<destroy>(m_soap, bytes, SOAP_TYPE_xsd__unsignedByte, -1));
}

void ContextMemory::discard() noexcept { std::free(std::exchange(m_bytes, nullptr)); }

bool OpenBlock::grow(std::size_t needed, std::size_t expected) {
  constexpr std::size_t slack = 32; // decoding may write a little behind the last byte
  constexpr std::size_t largest = largestBlock + slack;
  if (needed > largest - m_size)
    return false;
  // What may come; as much again as there is, so that many small pieces are not moved once each; what is needed.
  for (const std::size_t more : {std::max(expected, m_size), m_size, needed}) {
    const std::size_t capacity = std::min(m_size + std::max(more, needed), largest);
    if (unsigned char* const bytes = m_memory.reserve(capacity, m_size)) {
      m_bytes = bytes;
      m_capacity = capacity;
      return true;
    }
  }
  return false;
}

unsigned char* OpenBlock::close() {
  if (m_size > largestBlock)
    return nullptr;
  // Shrinking costs a call, and malloc keeps what comes back at its full size for the next block.
  constexpr std::size_t smallWaste = 64;
  unsigned char* const bytes = m_memory.keep(m_size, room() > m_size / 16 + smallWaste);
  if (bytes)
    m_bytes = nullptr;
  return bytes;
}

} // namespace tarnwell
