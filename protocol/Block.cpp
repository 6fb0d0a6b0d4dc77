#include "protocol/Block.h"

#include "protocol/HugePages.h"
#include "protocol/TypeNumbers.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace tarnwell {

/// Address space, of which what is written, and a little ahead of it, costs memory.
struct Region {
  void* mapping;
  std::size_t mapped;
  unsigned char* begin; ///< on the border of a huge page
  std::size_t capacity;
  std::size_t used;    ///< by blocks that were released
  std::size_t present; ///< bytes whose pages were asked for
  HugePages pages;
};

namespace {

constexpr std::size_t mebi = std::size_t{1} << 20;
constexpr std::size_t page = 4096, hugePage = 2 * mebi;
/// What a region has room for at least.
constexpr std::size_t smallest = 8 * mebi;
/// The most that an answer's length is taken for: blocks that are bigger move when they grow.
constexpr std::size_t mostLikely = 256 * mebi;

constexpr std::size_t roundUp(std::size_t size, std::size_t unit) { return (size + unit - 1) / unit * unit; }

/// Under this name the context keeps, as it does for its plug-ins, the region that is being filled.
constexpr char pluginId[] = "tarnwell/blocks";

/// The context's entry of that name; the runtime's own look-up gives its data alone, not where they are.
soap_plugin* findPlugin(struct soap* soap) {
  soap_plugin* plugin = soap->plugins;
  while (plugin && plugin->id != pluginId)
    plugin = plugin->next;
  return plugin;
}

int createPlugin(struct soap*, soap_plugin* plugin, void*) {
  plugin->id = pluginId;
  plugin->data = nullptr;
  plugin->fcopy = [](struct soap*, soap_plugin* copy, soap_plugin*) {
    copy->data = nullptr;
    return SOAP_OK;
  };
  plugin->fdelete = [](struct soap*, soap_plugin*) {};
  return SOAP_OK;
}

int freeRegion(struct soap* soap, soap_clist* entry) {
  Region* const region = static_cast<Region*>(entry->ptr);
  if (soap_plugin* const plugin = findPlugin(soap); plugin && plugin->data == region)
    plugin->data = nullptr;
  munmap(region->mapping, region->mapped);
  delete region;
  return SOAP_OK;
}

/// A new region, which the context frees with its objects. Null: out of memory.
Region* makeRegion(struct soap* soap, std::size_t capacity, bool huge) {
  capacity = roundUp(capacity, page);
  const std::size_t mapped = capacity + hugePage;
  void* const mapping =
      mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED)
    return nullptr;
  auto* const begin = reinterpret_cast<unsigned char*>(roundUp(reinterpret_cast<std::uintptr_t>(mapping), hugePage));
  Region* const region = new (std::nothrow) Region{mapping, mapped, begin, capacity, 0, 0, {begin, capacity, huge}};
  soap_clist* const entry = region ? soap_link(soap, SOAP_TYPE_xsd__unsignedByte, -1, freeRegion) : nullptr;
  if (!entry) {
    munmap(mapping, mapped);
    delete region;
    return nullptr;
  }
  entry->ptr = region;
  return region;
}

} // namespace

Block::Block(struct soap* soap) : m_soap(soap) {
  soap_plugin* const plugin = findPlugin(soap);
  m_region = plugin ? static_cast<Region*>(plugin->data) : nullptr;
  m_start = m_region ? m_region->used : 0;
}

std::size_t Block::room() const { return m_region ? m_region->capacity - m_start - m_size : 0; }

unsigned char* Block::end(std::size_t size) {
  const std::size_t at = m_start + m_size;
  if (at + size > m_region->present) {
    // A little ahead of what has arrived. A system that cannot do this gives the pages one by one, as ever.
    unsigned char* const first = m_region->begin + m_region->present;
    const std::size_t present = std::min(roundUp(at + size + HugePages::step, page), m_region->capacity);
    m_region->pages.watch([&] { static_cast<void>(madvise(first, present - m_region->present, MADV_POPULATE_WRITE)); });
    m_region->present = present;
  }
  return m_region->begin + at;
}

bool Block::grow(std::size_t needed, std::size_t likely) {
  const std::size_t wanted = std::max(needed, std::min(likely, mostLikely));
  // Once a region is as big as an answer claims to be, only what arrived opens another: claims alone would add up.
  const bool claimed = m_region && m_region->capacity >= wanted && m_region->used < m_region->capacity / 2;
  if (room() >= (claimed ? needed : wanted))
    return true;
  if (!findPlugin(m_soap) && soap_register_plugin(m_soap, createPlugin))
    return false;
  const bool huge = !m_region || m_region->pages.wanted();
  Region* region = makeRegion(m_soap, std::max(m_size + std::max(wanted, m_size), smallest), huge);
  if (!region && room() >= needed)
    return true;
  if (!region && !(region = makeRegion(m_soap, m_size + needed, huge)))
    return false;
  findPlugin(m_soap)->data = region;
  Region* const old = std::exchange(m_region, region);
  const std::size_t start = std::exchange(m_start, 0), size = std::exchange(m_size, 0);
  if (size > 0) {
    std::memcpy(end(size), old->begin + start, size);
    extend(size);
    const std::size_t kept = roundUp(start, page);
    static_cast<void>(madvise(old->begin + kept, old->present - kept, MADV_DONTNEED));
    old->present = kept;
  }
  return true;
}

unsigned char* Block::release() {
  m_region->used = std::min(roundUp(m_start + m_size, alignof(std::max_align_t)), m_region->capacity);
  return m_region->begin + m_start;
}

} // namespace tarnwell
