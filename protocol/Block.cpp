#include "protocol/Block.h"

#include "protocol/TypeNumbers.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <sys/mman.h>

namespace tarnwell {
namespace {

/// From here on a block is big: it is allocated at its likely size, of which only what is written costs memory.
constexpr std::size_t big = std::size_t{1} << 18;
/// No block of the schema is larger.
constexpr std::size_t largest = std::numeric_limits<int>::max();

int freeBytes(struct soap*, soap_clist* entry) {
  std::free(entry->ptr);
  return SOAP_OK;
}

} // namespace

void adviseHugePages(void* bytes, std::size_t size) {
  constexpr std::uintptr_t page = 4096;
  const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(bytes) + page - 1) & ~(page - 1);
  const std::uintptr_t last = (reinterpret_cast<std::uintptr_t>(bytes) + size) & ~(page - 1);
  if (last > first)
    static_cast<void>(madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE));
}

Block::~Block() { std::free(m_bytes); }

bool Block::grow(std::size_t needed, std::size_t likely) {
  std::size_t capacity = m_size + needed;
  if (m_capacity > 0)
    capacity = std::max(capacity, 2 * m_capacity);
  if (capacity >= big)
    capacity = std::max(capacity, std::min(likely, largest));
  void* bytes = std::realloc(m_bytes, capacity);
  if (!bytes)
    bytes = std::realloc(m_bytes, capacity = m_size + needed);
  if (!bytes)
    return false;
  m_bytes = static_cast<unsigned char*>(bytes);
  m_capacity = capacity;
  if (capacity >= big)
    adviseHugePages(m_bytes, capacity);
  return true;
}

unsigned char* Block::release(struct soap* soap) {
  soap_clist* const entry = soap_link(soap, SOAP_TYPE_xsd__unsignedByte, -1, freeBytes);
  if (!entry)
    return nullptr;
  if (void* const trimmed = std::realloc(m_bytes, m_size))
    m_bytes = static_cast<unsigned char*>(trimmed);
  entry->ptr = m_bytes;
  m_bytes = nullptr;
  return static_cast<unsigned char*>(entry->ptr);
}

} // namespace tarnwell
