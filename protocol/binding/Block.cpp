#include "protocol/binding/Block.h"

#include "protocol/binding/Base64.h"
#include "protocol/binding/BlockMemory.h"
#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>

namespace tarnwell {
namespace {

/// Bytes that may be written when `characters` of base64 text are decoded.
constexpr std::size_t decodedSize(std::size_t characters) { return characters / 4 * 3 + 3 + base64::decodeSlack; }

/// Makes room in `block` for the base64 text in the receive buffer. What may follow it decides how much is asked for.
bool makeRoom(struct soap* soap, OpenBlock& block) {
  const std::string_view next = unread(soap);
  const std::size_t end = std::min(next.find('<'), next.size());
  std::size_t more = 0; // characters
  if (block.size() > 0)
    more = static_cast<std::size_t>(std::min<ULONG64>(expectedBytes(soap), SIZE_MAX));
  else if (end == next.size()) // goes on behind the buffer: most of those end in the next one
    more = next.size() + SOAP_BUFLEN;
  return block.grow(decodedSize(end), decodedSize(more));
}

/// Decodes whole groups of four plain characters at the start of `text` to the end of `block`, where they do not count
/// yet. Returns the number of characters; 0 with the context's error set: out of memory.
std::size_t decode(struct soap* soap, OpenBlock& block, std::string_view text) {
  if (block.room() < decodedSize(0) && !makeRoom(soap, block)) {
    soap->error = SOAP_EOM;
    return 0;
  }
  const std::size_t fitting = (block.room() - base64::decodeSlack) / 3 * 4;
  return base64::decodeGroups(text.data(), std::min(text.size(), fitting), block.end());
}

/// Base64 text up to the element's end tag, or to its first child when there is no text. White space is allowed
/// anywhere, padding at the end only.
int readBase64(struct soap* soap, OpenBlock& block) {
  char group[4];
  std::size_t count = 0; // characters in it
  bool padded = false;
  for (;;) {
    if (unread(soap).empty() && soap_recv(soap))
      return soap->error = SOAP_CHK_EOF;
    const std::string_view next = unread(soap);
    if (readsBuffer(soap) && next.starts_with("</"))
      break;
    if (count == 0 && !padded && !soap->ahead) {
      const std::size_t taken = decode(soap, block, next);
      if (soap->error)
        return soap->error;
      block.extend(taken / 4 * 3);
      skipUnread(soap, taken);
      if (taken > 0 && (taken == next.size() || next[taken] == '<'))
        continue;
    }
    // One character the slow way: white space, padding, an odd group at the buffer's edge, the end.
    if (next.starts_with('<'))
      skipInstructions(soap);
    const soap_wchar c = soap_get(soap);
    if (static_cast<int>(c) == EOF)
      return soap->error = SOAP_CHK_EOF;
    if (c == endTagMark || (c == startTagMark && block.size() == 0 && count == 0)) {
      soap_unget(soap, c);
      break;
    }
    const int character = static_cast<int>(c & 0x7fffffff); // without the mark of a reference
    if (isBlank(character))
      continue;
    if (character == '=' && (padded || count >= 2)) {
      padded = true;
      continue;
    }
    if (padded || character > 'z')
      return soap->error = SOAP_TYPE;
    group[count++] = static_cast<char>(character);
    if (count < sizeof group)
      continue;
    if (decode(soap, block, {group, count}) != count)
      return soap->error = soap->error ? soap->error : SOAP_TYPE;
    block.extend(3);
    count = 0;
  }
  if (count == 0)
    return SOAP_OK;
  // Two characters left are one byte, three are two.
  std::fill(group + count, std::end(group), 'A');
  if (count == 1 || decode(soap, block, {group, sizeof group}) == 0)
    return soap->error = soap->error ? soap->error : SOAP_TYPE;
  block.extend(count - 1);
  return SOAP_OK;
}

int readBlock(struct soap* soap, const Type&, void* value) {
  xsd__base64Binary& block = *static_cast<xsd__base64Binary*>(value);
  if (*soap->href) // not "#": the data is an attachment
    return soap_attachment_forward(soap, &block.__ptr, &block.__size, &block.id, &block.type, &block.options);
  if (!soap->body)
    return SOAP_OK;
  ContextMemory ofContext(soap);
  Receiver* const given = receiverOf(soap);
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
  if (countOnly(soap, base64::encodedSize(size)))
    return SOAP_OK;
  // Straight into the send buffer where there is one, otherwise by pieces.
  char piece[4096];
  while (size > 0) {
    std::size_t room = 0;
    char* const buffer = sendRoom(soap, room);
    if (buffer && room < 4) {
      if (soap_flush(soap))
        return soap->error;
      continue;
    }
    const std::size_t taken = std::min(size, (buffer ? room : sizeof piece) / 4 * 3);
    base64::encode(bytes, taken, buffer ? buffer : piece);
    if (buffer)
      extendSent(soap, base64::encodedSize(taken));
    else if (soap_send_raw(soap, piece, base64::encodedSize(taken)))
      return soap->error;
    bytes += taken;
    size -= taken;
  }
  return SOAP_OK;
}

/// Null for a block without bytes.
const unsigned char* bytesOf(const xsd__base64Binary& block) { return block.__size > 0 ? block.__ptr : nullptr; }

int writeBlock(struct soap* soap, const Type&, const void* value) {
  const xsd__base64Binary& block = *static_cast<const xsd__base64Binary*>(value);
  return writeBase64(soap, block.__ptr, bytesOf(block) ? static_cast<std::size_t>(block.__size) : 0);
}

void markAttachment(struct soap* soap, const Type& type, const void* value) {
  const xsd__base64Binary& block = *static_cast<const xsd__base64Binary*>(value);
  if (!bytesOf(block) || (!block.id && !block.type))
    return;
  soap->omode |= SOAP_ENC_DIME; // document/literal messages have attachments only when told so
  static_cast<void>(
      soap_attachment_reference(soap, value, block.__ptr, block.__size, type.number, block.id, block.type));
}

bool announceAttachment(struct soap* soap, const Type& type, const void* value, const char* tag, int& id,
                        const char* name) {
  const xsd__base64Binary& block = *static_cast<const xsd__base64Binary*>(value);
  id = soap_attachment(soap, tag, id, value, bytesOf(block), block.__size, block.id, block.type, block.options, name,
                       type.number);
  return id >= 0;
}

} // namespace

constexpr Codec blockCodec = {readBlock, writeBlock, false, markAttachment, announceAttachment};

} // namespace tarnwell
