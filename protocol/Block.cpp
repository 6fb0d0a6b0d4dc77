#include "protocol/Block.h"

#include "protocol/TypeNumbers.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace tarnwell {
namespace {

constexpr std::size_t mebi = std::size_t{1} << 20;
constexpr std::size_t hugePage = 2 * mebi;
/// What a region has room for at least.
constexpr std::size_t smallest = 8 * mebi;
/// Up to here a block is small, which most are, whatever the message's length allows.
constexpr std::size_t small = mebi / 2;
/// The most that an answer's length is taken for.
constexpr std::size_t mostLikely = 256 * mebi;

constexpr std::size_t roundUp(std::size_t size, std::size_t unit) { return (size + unit - 1) / unit * unit; }

/// Address space, of which what is written, and a little ahead of it, costs memory.
class Region {
public:
  Region(void* mapping, std::size_t size, bool& huge)
      : begin(reinterpret_cast<unsigned char*>(roundUp(reinterpret_cast<std::uintptr_t>(mapping), hugePage))),
        capacity(size), memory(begin, size, huge), m_mapping(mapping) {}
  Region(const Region&) = delete;
  Region& operator=(const Region&) = delete;
  ~Region() { munmap(m_mapping, capacity + hugePage); }

  unsigned char* const begin;
  const std::size_t capacity;
  std::size_t used = 0; ///< by blocks that were released
  FreshMemory memory;

private:
  void* m_mapping;
};

/// Null: out of memory.
std::unique_ptr<Region> makeRegion(std::size_t size, bool& huge) {
  void* const mapping =
      mmap(nullptr, size + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED)
    return nullptr;
  std::unique_ptr<Region> region(new (std::nothrow) Region(mapping, size, huge));
  if (!region)
    munmap(mapping, size + hugePage);
  return region;
}

} // namespace

/// What a context keeps for its blocks beside their bytes.
struct Blocks {
  MakeBigBlock make = nullptr;
  Region* region = nullptr; ///< the one being filled
  BigBlock* last = nullptr; ///< of the big ones
  bool huge = true;         ///< as long as huge pages are not dear
};

namespace {

/// Under this name the context keeps its Blocks, as it does for its plug-ins.
constexpr char pluginId[] = "tarnwell/blocks";

Blocks* findBlocks(struct soap* soap) { return static_cast<Blocks*>(soap_lookup_plugin(soap, pluginId)); }

int createPlugin(struct soap*, soap_plugin* plugin, void*) {
  plugin->id = pluginId;
  plugin->data = new (std::nothrow) Blocks{};
  plugin->fcopy = [](struct soap* soap, soap_plugin* copy, soap_plugin*) { return createPlugin(soap, copy, nullptr); };
  plugin->fdelete = [](struct soap*, soap_plugin* old) { delete static_cast<Blocks*>(old->data); };
  return plugin->data ? SOAP_OK : SOAP_EOM;
}

/// Makes them if the context has none yet. Null: out of memory.
Blocks* needBlocks(struct soap* soap) {
  Blocks* const blocks = findBlocks(soap);
  return blocks || soap_register_plugin(soap, createPlugin) ? blocks : findBlocks(soap);
}

/// Lets the context free it with its objects. Null: out of memory.
template <class Storage> Storage* keep(struct soap* soap, std::unique_ptr<Storage> storage) {
  const auto free = [](struct soap* context, soap_clist* entry) {
    if (Blocks* const blocks = findBlocks(context)) {
      blocks->region = nullptr;
      blocks->last = nullptr;
    }
    delete static_cast<Storage*>(entry->ptr);
    return SOAP_OK;
  };
  soap_clist* const entry = storage ? soap_link(soap, SOAP_TYPE_xsd__unsignedByte, -1, free) : nullptr;
  if (!entry)
    return nullptr;
  Storage* const kept = storage.release();
  entry->ptr = kept;
  return kept;
}

} // namespace

void setBigBlocks(struct soap* soap, MakeBigBlock make) {
  if (Blocks* const blocks = soap ? needBlocks(soap) : nullptr)
    blocks->make = make;
}

const BigBlock* lastBigBlock(struct soap* soap) {
  const Blocks* const blocks = findBlocks(soap);
  return blocks ? blocks->last : nullptr;
}

Block::Block(struct soap* soap) : m_soap(soap), m_blocks(needBlocks(soap)) {}

unsigned char* Block::end(std::size_t size) {
  m_memory->reach(m_bytes + m_size + size);
  return m_bytes + m_size;
}

bool Block::grow(std::size_t needed, std::size_t likely) {
  if (!m_blocks)
    return false;
  // What the message may bring, or as much again as there is.
  const std::size_t more = std::max(needed, std::min(std::max(likely, m_size), mostLikely));
  const bool isSmall = m_size + needed <= small;
  if (!isSmall && m_blocks->make)
    return growBig(m_size + more);
  m_capacity = isSmall ? std::min(m_size + more, small) : m_size + more;
  // Half of that will do: claims alone must not open region after region.
  const std::size_t left = m_blocks->region ? m_blocks->region->capacity - m_blocks->region->used : 0;
  if (left >= std::max(m_capacity / 2, m_size + needed)) {
    m_capacity = std::min(m_capacity, left);
  } else {
    Region* const region = keep(m_soap, makeRegion(std::max(m_capacity, smallest), m_blocks->huge));
    if (!region)
      return false;
    m_blocks->region = region;
  }
  m_memory = &m_blocks->region->memory;
  moveTo(m_blocks->region->begin + m_blocks->region->used);
  return true;
}

bool Block::growBig(std::size_t size) {
  const bool isFirst = !m_big;
  if (isFirst)
    m_big = m_blocks->make();
  unsigned char* const bytes = m_big ? m_big->resize(size) : nullptr;
  if (!bytes)
    return false;
  m_capacity = size;
  m_memory = &m_bigMemory.emplace(bytes, size, m_blocks->huge);
  if (isFirst)
    moveTo(bytes);
  m_bytes = bytes;
  return true;
}

void Block::moveTo(unsigned char* bytes) {
  const unsigned char* const old = std::exchange(m_bytes, bytes);
  const std::size_t size = old == bytes ? 0 : std::exchange(m_size, 0);
  if (size > 0) {
    std::memcpy(end(size), old, size);
    extend(size);
  }
}

unsigned char* Block::release() {
  if (!m_big) {
    Region& region = *m_blocks->region;
    region.used = std::min(region.used + roundUp(m_size, alignof(std::max_align_t)), region.capacity);
    return m_bytes;
  }
  unsigned char* const bytes = m_big->resize(m_size);
  m_blocks->last = keep(m_soap, std::move(m_big));
  return m_blocks->last ? bytes : nullptr;
}

} // namespace tarnwell
