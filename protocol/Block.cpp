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

Block::~Block() { std::free(m_bytes); }

unsigned char* Block::end(std::size_t size) {
  const std::size_t needed = m_size + size;
  if (m_capacity < big || needed <= m_present)
    return m_bytes + m_size;
  // Only a little ahead of what has arrived: the likely size is not trusted.
  constexpr std::size_t ahead = std::size_t{1} << 20, page = 4096;
  const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(m_bytes) + m_present) & ~(page - 1);
  m_present = std::min(needed + ahead, m_capacity);
  const std::uintptr_t last = reinterpret_cast<std::uintptr_t>(m_bytes) + m_present;
  // A system that cannot do this gives the pages one by one, as ever.
  static_cast<void>(madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE));
  return m_bytes + m_size;
}

bool Block::grow(std::size_t needed, std::size_t likely) {
  const std::size_t least = m_size + needed;
  const std::size_t doubled = std::max(least, 2 * m_capacity);
  for (const std::size_t capacity :
       {doubled < big ? doubled : std::max(doubled, std::min(likely, largest)), doubled, least}) {
    void* const bytes = std::realloc(m_bytes, capacity);
    if (!bytes)
      continue;
    m_bytes = static_cast<unsigned char*>(bytes);
    m_capacity = capacity;
    return true;
  }
  return false;
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
