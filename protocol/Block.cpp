#include "protocol/Block.h"

#include "protocol/Base64.h"
#include "protocol/Reader.h"
#include "protocol/SchemaTypes.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tarnwell {
namespace {

/// Memory of the context, which frees it with its objects.
class ContextMemory : public BlockMemory {
public:
  explicit ContextMemory(struct soap* soap) : m_soap(soap) {}
  ~ContextMemory() override { std::free(m_bytes); }

  unsigned char* reserve(std::size_t capacity, std::size_t) noexcept override {
    void* const bytes = std::realloc(m_bytes, capacity);
    if (!bytes)
      return nullptr;
    return m_bytes = static_cast<unsigned char*>(bytes);
  }

  unsigned char* keep(std::size_t size, bool shrink) noexcept override {
    soap_clist* const entry = soap_link(m_soap, SOAP_TYPE_xsd__unsignedByte, -1, [](struct soap*, soap_clist* old) {
      std::free(old->ptr);
      return SOAP_OK;
    });
    if (!entry)
      return nullptr;
    if (shrink)
      reserve(size, size);
    entry->ptr = m_bytes;
    return std::exchange(m_bytes, nullptr);
  }

  void discard() noexcept override { std::free(std::exchange(m_bytes, nullptr)); }

private:
  struct soap* m_soap;
  unsigned char* m_bytes = nullptr;
};

/// Bytes that may be written when `characters` of base64 text are decoded.
constexpr std::size_t decodedSize(std::size_t characters) { return characters / 4 * 3 + 3 + base64::decodeSlack; }

/// Makes room in `block` for the base64 text in the receive buffer. What may follow it decides how much is asked for.
bool makeRoom(struct soap* soap, OpenBlock& block) {
  const std::string_view next = unread(soap);
  const std::size_t end = std::min(next.find('<'), next.size());
  std::size_t more = 0;
  if (block.size() > 0) {
    // What the runtime counts has the HTTP header in it, of one buffer at most.
    const ULONG64 read = soap->count - next.size(), most = soap->length + SOAP_BUFLEN;
    more = soap->length ? most - std::min(most, read) : 0;
  } else if (end == next.size()) { // goes on behind the buffer: most of those end in the next one
    more = next.size() + SOAP_BUFLEN;
  }
  return block.grow(decodedSize(end), decodedSize(more));
}

/// The bits collected so far, `count` bytes of them.
bool append(struct soap* soap, OpenBlock& block, unsigned bits, std::size_t count) {
  if (block.room() < decodedSize(0) && !makeRoom(soap, block))
    return false;
  for (std::size_t i = 0; i < count; ++i)
    block.end()[i] = static_cast<unsigned char>(bits >> (16 - 8 * i));
  block.extend(count);
  return true;
}

/// Base64 text up to the element's end tag or first child. Blanks are allowed anywhere, padding at the end only.
int readBase64(struct soap* soap, OpenBlock& block) {
  unsigned group = 0;
  int characters = 0;
  bool padded = false;
  for (;;) {
    if (unread(soap).empty() && soap_recv(soap))
      return soap->error = SOAP_CHK_EOF;
    const std::string_view next = unread(soap);
    if (!soap->ahead && !soap->cdata && next.substr(0, 2) == "</")
      break;
    if (characters == 0 && !padded && !soap->ahead && next.size() >= 4) {
      if (block.room() < decodedSize(0) && !makeRoom(soap, block))
        return soap->error = SOAP_EOM;
      const std::size_t fitting = (block.room() - base64::decodeSlack) / 3 * 4;
      const std::size_t taken = base64::decodeGroups(next.data(), std::min(next.size(), fitting), block.end());
      block.extend(taken / 4 * 3);
      soap->bufidx += taken;
      if (taken == fitting || taken == next.size())
        continue;
    }
    // One character the slow way: a blank, padding, an odd group at the buffer's edge, the end.
    const soap_wchar c = soap_get(soap);
    if (static_cast<int>(c) == EOF)
      return soap->error = SOAP_CHK_EOF;
    if (c == endTagMark || c == startTagMark) {
      soap_unget(soap, c);
      break;
    }
    const int character = static_cast<int>(c & 0x7fffffff);
    if (isBlank(character))
      continue;
    const int bits = base64::decodeCharacter(character);
    padded = padded || (character == '=' && characters >= 2);
    if (padded && character == '=')
      continue;
    if (bits < 0 || padded)
      return soap->error = SOAP_TYPE;
    group = group << 6 | static_cast<unsigned>(bits);
    if (++characters < 4)
      continue;
    if (!append(soap, block, group, 3))
      return soap->error = SOAP_EOM;
    characters = 0;
  }
  if (characters == 1)
    return soap->error = SOAP_TYPE;
  // Two characters left are one byte, three are two.
  if (characters > 1 &&
      !append(soap, block, group << (characters == 2 ? 12 : 6), static_cast<std::size_t>(characters - 1)))
    return soap->error = SOAP_EOM;
  return SOAP_OK;
}

int readBlock(struct soap* soap, const Type&, void* value) {
  xsd__base64Binary& block = *static_cast<xsd__base64Binary*>(value);
  if (*soap->href) // not "#": the data is an attachment
    return soap_attachment_forward(soap, &block.__ptr, &block.__size, &block.id, &block.type, &block.options);
  if (!soap->body)
    return SOAP_OK;
  ContextMemory ofContext(soap);
  BlockMemory* const given = blockMemory(soap);
  OpenBlock open(given && !given->hasReferences ? *given : ofContext);
  if (readBase64(soap, open))
    return soap->error;
  if (open.size() > 0) {
    unsigned char* const bytes = open.close();
    if (!bytes)
      return soap->error = SOAP_EOM;
    block.__ptr = bytes;
    block.__size = static_cast<int>(open.size());
    return SOAP_OK;
  }
  // Without data there may be an XOP include, which names an attachment.
  if (peekElement(soap) && soap->error != SOAP_NO_TAG)
    return soap->error;
  soap->error = SOAP_OK;
  return soap_xop_forward(soap, &block.__ptr, &block.__size, &block.id, &block.type, &block.options);
}

int writeBase64(struct soap* soap, const unsigned char* bytes, std::size_t size) {
  if (soap->mode & SOAP_IO_LENGTH) { // the counting pass: arithmetic will do
    soap->count += base64::encodedSize(size);
    return SOAP_OK;
  }
  // Straight into the send buffer where there is one, otherwise by pieces.
  const bool buffered = (soap->mode & SOAP_IO) != SOAP_IO_FLUSH;
  char piece[4096];
  while (size > 0) {
    const std::size_t room = buffered ? sizeof soap->buf - soap->bufidx : sizeof piece;
    if (room < 4) {
      if (soap_flush(soap))
        return soap->error;
      continue;
    }
    const std::size_t taken = std::min(size, room / 4 * 3);
    base64::encode(bytes, taken, buffered ? soap->buf + soap->bufidx : piece);
    if (buffered)
      soap->bufidx += base64::encodedSize(taken);
    else if (soap_send_raw(soap, piece, base64::encodedSize(taken)))
      return soap->error;
    bytes += taken;
    size -= taken;
  }
  return SOAP_OK;
}

int writeBlock(struct soap* soap, const Type&, const void* value) {
  const xsd__base64Binary& block = *static_cast<const xsd__base64Binary*>(value);
  return writeBase64(soap, block.__ptr, block.__ptr && block.__size > 0 ? static_cast<std::size_t>(block.__size) : 0);
}

} // namespace

bool OpenBlock::grow(std::size_t needed, std::size_t expected) {
  constexpr std::size_t largest = largestBlock + decodedSize(8); // decoding may write a little behind the last byte
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

constexpr Codec blockCodec = {readBlock, writeBlock, false};

} // namespace tarnwell
