#include "protocol/Block.h"

#include "protocol/TypeNumbers.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace tarnwell {

/// Address space, of which what is written, and a little ahead of it, costs memory.
struct Region {
  void* mapping;
  unsigned char* begin; ///< on the border of a huge page
  std::size_t used;     ///< by blocks that were released
  FreshMemory memory;
};

/// What a context keeps for its blocks beside their bytes.
struct Blocks {
  MakeBigBlock make;
  Region* region = nullptr; ///< the one being filled
  BigBlock* last = nullptr; ///< of the big ones
  HugePages huge = HugePages::WhileCheap;
};

namespace {

constexpr std::size_t mebi = std::size_t{1} << 20;
constexpr std::size_t alignment = alignof(std::max_align_t);
constexpr std::size_t hugePage = 2 * mebi, regionSize = 8 * mebi, mapped = regionSize + hugePage;
/// What a block may hold before anyone asks how big it will get: most are small, whatever the message's length.
constexpr std::size_t trial = mebi / 2;
/// From here on a block has memory of its own.
constexpr std::size_t big = 4 * mebi;
/// The most that an answer's length is taken for.
constexpr std::size_t mostLikely = 256 * mebi;

class MallocBlock : public BigBlock {
public:
  ~MallocBlock() override { std::free(m_bytes); }
  unsigned char* resize(std::size_t size) noexcept override {
    void* const bytes = std::realloc(m_bytes, size);
    return bytes ? m_bytes = static_cast<unsigned char*>(bytes) : nullptr;
  }

private:
  unsigned char* m_bytes = nullptr;
};

std::unique_ptr<BigBlock> makeMallocBlock() noexcept {
  return std::unique_ptr<BigBlock>(new (std::nothrow) MallocBlock);
}

/// Under this name the context keeps its Blocks, as it does for its plug-ins.
constexpr char pluginId[] = "tarnwell/blocks";

Blocks* findBlocks(struct soap* soap) { return static_cast<Blocks*>(soap_lookup_plugin(soap, pluginId)); }

int setBlocks(soap_plugin* plugin, MakeBigBlock make) {
  plugin->data = new (std::nothrow) Blocks{make};
  return plugin->data ? SOAP_OK : SOAP_EOM;
}

int createPlugin(struct soap*, soap_plugin* plugin, void*) {
  plugin->id = pluginId;
  plugin->fcopy = [](struct soap*, soap_plugin* copy, soap_plugin* original) {
    return setBlocks(copy, static_cast<Blocks*>(original->data)->make);
  };
  plugin->fdelete = [](struct soap*, soap_plugin* old) { delete static_cast<Blocks*>(old->data); };
  return setBlocks(plugin, makeMallocBlock);
}

/// Makes them if the context has none yet. Null: out of memory.
Blocks* needBlocks(struct soap* soap) {
  Blocks* const blocks = findBlocks(soap);
  return blocks || soap_register_plugin(soap, createPlugin) ? blocks : findBlocks(soap);
}

int freeRegion(struct soap* soap, soap_clist* entry) {
  Region* const region = static_cast<Region*>(entry->ptr);
  if (Blocks* const blocks = findBlocks(soap); blocks && blocks->region == region)
    blocks->region = nullptr;
  munmap(region->mapping, mapped);
  delete region;
  return SOAP_OK;
}

int freeBig(struct soap* soap, soap_clist* entry) {
  BigBlock* const block = static_cast<BigBlock*>(entry->ptr);
  if (Blocks* const blocks = findBlocks(soap); blocks && blocks->last == block)
    blocks->last = nullptr;
  delete block;
  return SOAP_OK;
}

/// Lets the context free `object` with its objects. False: out of memory.
bool keep(struct soap* soap, void* object, int (*free)(struct soap*, soap_clist*)) {
  soap_clist* const entry = soap_link(soap, SOAP_TYPE_xsd__unsignedByte, -1, free);
  if (entry)
    entry->ptr = object;
  return entry != nullptr;
}

/// A new region, which the context frees with its objects. Null: out of memory.
Region* makeRegion(struct soap* soap, HugePages huge) {
  void* const mapping =
      mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED)
    return nullptr;
  auto* const begin = reinterpret_cast<unsigned char*>((reinterpret_cast<std::uintptr_t>(mapping) + hugePage - 1) /
                                                       hugePage * hugePage);
  Region* const region = new (std::nothrow) Region{mapping, begin, 0, {begin, regionSize, huge}};
  if (region && keep(soap, region, freeRegion))
    return region;
  munmap(mapping, mapped);
  delete region;
  return nullptr;
}

} // namespace

void setBigBlocks(struct soap* soap, MakeBigBlock make) {
  if (Blocks* const blocks = needBlocks(soap))
    blocks->make = make;
}

const BigBlock* lastBigBlock(struct soap* soap) {
  const Blocks* const blocks = findBlocks(soap);
  return blocks ? blocks->last : nullptr;
}

Block::Block(struct soap* soap) : m_soap(soap), m_blocks(findBlocks(soap)) {}

unsigned char* Block::end(std::size_t size) {
  unsigned char* const end = m_bytes + m_size;
  m_memory->reach(end + size);
  m_blocks->huge = m_memory->huge();
  return end;
}

bool Block::grow(std::size_t needed, std::size_t likely) {
  if (!m_blocks && !(m_blocks = needBlocks(m_soap)))
    return false;
  const std::size_t least = m_size + needed, most = m_size + std::max(needed, likely);
  if (most > big && least > trial)
    return growBig(least, most);
  m_capacity = most > big ? trial : most;
  if (!m_blocks->region || regionSize - m_blocks->region->used < m_capacity) {
    Region* const region = makeRegion(m_soap, m_blocks->huge);
    if (!region)
      return false;
    m_blocks->region = region;
  }
  m_memory = &m_blocks->region->memory;
  const unsigned char* const old = std::exchange(m_bytes, m_blocks->region->begin + m_blocks->region->used);
  if (m_bytes != old)
    copyStart(old);
  return true;
}

bool Block::growBig(std::size_t least, std::size_t most) {
  std::unique_ptr<BigBlock> made = m_big ? nullptr : m_blocks->make();
  BigBlock* const block = m_big ? m_big.get() : made.get();
  if (!block)
    return false;
  std::size_t size = std::max({least, std::min(most, mostLikely), 2 * m_size});
  unsigned char* bytes = block->resize(size);
  if (!bytes && !(bytes = block->resize(size = least)))
    return false;
  const unsigned char* const old = std::exchange(m_bytes, bytes);
  m_capacity = size;
  m_memory = &m_bigMemory.emplace(bytes, size, m_blocks->huge);
  if (made) {
    m_big = std::move(made);
    copyStart(old);
  }
  return true;
}

void Block::copyStart(const unsigned char* from) {
  if (const std::size_t size = std::exchange(m_size, 0)) {
    std::memcpy(end(size), from, size);
    extend(size);
  }
}

unsigned char* Block::release() {
  if (!m_big) {
    Region& region = *m_blocks->region;
    region.used = std::min(region.used + (m_size + alignment - 1) / alignment * alignment, regionSize);
    return m_bytes;
  }
  unsigned char* const bytes = m_big->resize(m_size);
  if (!bytes || !keep(m_soap, m_big.get(), freeBig))
    return nullptr;
  m_blocks->last = m_big.release();
  return bytes;
}

} // namespace tarnwell
