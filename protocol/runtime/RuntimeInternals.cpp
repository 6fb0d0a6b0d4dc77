#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <sys/socket.h>
#include <utility>

namespace tarnwell {
namespace {

/// The size of the name at the start of `text`, if all that follows it in its tag is ">"; npos if more does, or the tag
/// goes on behind `text`.
std::size_t nameSize(std::string_view text) {
  constexpr std::uint64_t ends =
      ((2ULL << ' ') - 1) | 1ULL << '"' | 1ULL << '&' | 1ULL << '\'' | 1ULL << '/' | 1ULL << '<' | 1ULL << '>';
  std::size_t size = 0;
  for (; size < text.size(); ++size)
    if (const unsigned code = static_cast<unsigned char>(text[size]); code < 64 && (ends >> code & 1) != 0)
      break;
  return size < text.size() && text[size] == '>' ? size : text.npos;
}

/// The runtime keeps the attributes of earlier elements and looks through them at each element: drops them, so that
/// many names cost linear time.
void dropAttributes(struct soap* soap) {
  while (struct soap_attribute* const attribute = soap->attributes) {
    soap->attributes = attribute->next;
    SOAP_FREE(soap, attribute->value);
    SOAP_FREE(soap, attribute);
  }
}

/// Does what soap_peek_element does for a start tag without attributes, or an end tag, that is whole in the buffer:
/// most of an answer. False: it is something else, and nothing was done.
bool peekPlainTag(struct soap* soap) {
  const std::string_view next = unread(soap);
  const char* at = next.data();
  const char* const end = at + next.size();
  while (at < end && isBlank(*at))
    ++at;
  if (soap->ahead || soap->cdata || soap->feltbegin || soap->mode & SOAP_XML_DOM || end - at < 3 || *at != '<')
    return false;
  ++at;
  const bool endTag = *at == '/';
  const std::string_view rest(at, std::min<std::size_t>(static_cast<std::size_t>(end - at), sizeof soap->tag));
  const std::size_t size = endTag ? 0 : nameSize(rest);
  if (!endTag && (size == 0 || size == rest.npos || *at == '!' || *at == '?' || *at == '%'))
    return false;
  soap->tag[rest.copy(soap->tag, size)] = '\0';
  soap->peeked = 1;
  soap->id[0] = soap->href[0] = soap->type[0] = '\0';
  soap->arrayType[0] = soap->arraySize[0] = soap->arrayOffset[0] = '\0';
  soap->other = soap->null = soap->mustUnderstand = 0;
  soap->position = 0;
  soap->root = -1;
  soap->bufidx = static_cast<std::size_t>(at + size + 1 - soap->buf);
  if (endTag) {
    soap->ahead = endTagMark;
    soap->error = SOAP_NO_TAG;
    return true;
  }
  soap_pop_namespace(soap);
  dropAttributes(soap);
  soap->body = 1;
  soap->error = SOAP_OK;
  return true;
}

/// Most bytes that are received at once: what a piece of many names costs before the next piece is checked.
constexpr std::size_t longestPiece = 32768;
/// Most names that the runtime searches for each, and most ids of one hash value.
constexpr std::size_t mostNames = 256;

/// The entries of one of the runtime's lists, counted up to one more than that.
template <class Entry> std::size_t count(const Entry* entry) {
  std::size_t entries = 0;
  for (; entry && entries <= mostNames; entry = entry->next)
    ++entries;
  return entries;
}

/// Gives the elements that name an attachment its bytes.
int resolveAttachments(struct soap* soap) {
  const auto withoutBrackets = [](std::string_view id) {
    return id.starts_with('<') ? id.substr(1, id.size() - 2) : id;
  };
  std::map<std::string, const soap_multipart*, std::less<>> parts;
  for (const soap_multipart* part : {soap->mime.list, soap->dime.list})
    for (; part; part = part->next)
      if (part->id)
        parts.try_emplace(std::string(withoutBrackets(part->id)), part);
  while (soap_xlist* const reference = soap->xlist) {
    const std::string_view uri = reference->id, id = uri.substr(uri.starts_with("cid:") ? 4 : 0);
    auto found = parts.find(withoutBrackets(id));
    if (found == parts.end()) { // "%40" for "@" (RFC 2392 section 2)
      char plain[SOAP_TAGLEN];
      soap_decode_key(plain, sizeof plain, id.data());
      found = parts.find(plain);
    }
    if (found == parts.end())
      return soap->error = soap->mode & SOAP_ENC_MTOM ? SOAP_MIME_HREF : SOAP_DIME_HREF;
    const soap_multipart& part = *found->second;
    if (part.size > largestBlock)
      return soap->error = SOAP_EOM;
    *reference->ptr = reinterpret_cast<unsigned char*>(const_cast<char*>(part.ptr));
    *reference->size = static_cast<int>(part.size);
    *reference->type = const_cast<char*>(part.type);
    *reference->options = const_cast<char*>(part.options ? part.options : part.description);
    soap->xlist = reference->next;
    SOAP_FREE(soap, reference);
  }
  return SOAP_OK;
}

/// The runtime asks before it reads an attachment, and reserves what the attachment's header claims: so that a false
/// claim costs nothing, none may be longer than the answer. Null: it is read into memory.
void* checkAttachment(struct soap* soap, const char*, const char*, const char*) {
  const std::size_t size = soap->dime.size;
  if (size > largestBlock || (soap->length && size > soap->length))
    soap->error = SOAP_DIME_ERROR;
  return nullptr;
}

} // namespace

void setUpClient(struct soap* soap) {
  soap->socket_flags = MSG_NOSIGNAL; // a peer that closes early must not end the host by SIGPIPE
  soap->recv_maxlength = 0;          // the reader bounds each block, and a map has four characters for three bytes
  // The system's own socket buffers grow with what arrives; with the runtime's fixed ones a download costs twice the
  // time.
  soap->sndbuf = 0;
  soap->rcvbuf = 0;
  // Where the runtime turns for an endpoint without a host; by default the process's standard streams.
  soap->sendfd = -1;
  soap->recvfd = -1;
  static const auto runtimesReceive = soap->frecv; // gives up when signals interrupt it eleven times in a row
  soap->frecv = [](struct soap* context, char* to, std::size_t size) {
    std::size_t received = 0;
    do
      received = runtimesReceive(context, to, std::min(size, longestPiece));
    while (received == 0 && context->errnum == EINTR);
    return received;
  };
  soap->fpreparerecv = [](struct soap* context, const char*, std::size_t) -> int {
    return hasTooManyNames(context) ? SOAP_OCCURS : SOAP_OK;
  };
  soap->fdimewriteopen = checkAttachment;
}

ULONG64 expectedBytes(const struct soap* soap) {
  // What the runtime counts has the HTTP header in it, of one buffer at most.
  const ULONG64 read = soap->count - unread(soap).size(), most = soap->length + SOAP_BUFLEN;
  return soap->length ? most - std::min(most, read) : 0;
}

void skipInstructions(struct soap* soap) {
  while (!soap->ahead && !soap->cdata) {
    soap_wchar c = soap_getchar(soap);
    while (isBlank(static_cast<int>(c)))
      c = soap_getchar(soap);
    if (c != '<' || soap_get0(soap) != '?') {
      soap_unget(soap, c);
      return;
    }
    for (soap_wchar last = 0; (c != '>' || last != '?') && static_cast<int>(c) != EOF; c = soap_get1(soap))
      last = c;
  }
}

int peekElement(struct soap* soap) {
  if (soap->peeked || peekPlainTag(soap))
    return soap->error = *soap->tag ? SOAP_OK : SOAP_NO_TAG;
  dropAttributes(soap);
  if (soap->level > 0 && !(soap->mode & SOAP_XML_DOM))
    skipInstructions(soap);
  const int error = soap_peek_element(soap);
  if (hasTooManyNames(soap))
    return soap->error = SOAP_OCCURS;
  if (error)
    return error;
  for (const struct soap_attribute* attribute = soap->attributes; attribute; attribute = attribute->next)
    if (!*soap->href && attribute->visible && attribute->value && std::strcmp(attribute->name, "href") == 0)
      std::snprintf(soap->href, sizeof soap->href, "%s", attribute->value);
  for (const char* const id : {soap->id, soap->href})
    if (*id == '#' && count(soap->iht[soap_hash(id)]) > mostNames)
      return soap->error = SOAP_OCCURS;
  return SOAP_OK;
}

bool hasTooManyNames(const struct soap* soap) { return count(soap->attributes) + count(soap->nlist) > mostNames; }

bool takeEndTag(struct soap* soap) {
  const std::string_view next = unread(soap);
  const bool isTaken = soap->peeked && !*soap->tag && soap->ahead == endTagMark; // "</"
  const bool isNext = !soap->error && !soap->peeked && !soap->ahead && next.starts_with("</");
  const std::size_t start = isTaken ? 0 : 2, size = isTaken || isNext ? nameSize(next.substr(start)) : next.npos;
  if (size == next.npos || soap->mode & (SOAP_XML_STRICT | SOAP_XML_DOM) || soap->feltendin || soap->cdata)
    return false;
  skipUnread(soap, start + size + 1);
  soap->peeked = 0;
  soap->ahead = 0;
  soap->error = SOAP_OK;
  --soap->level;
  return true;
}

int endReceive(struct soap* soap) {
  std::uintptr_t ids = 0; // no branch in the loop, so that it takes several entries at a time
  for (const soap_ilist* const entry : soap->iht)
    ids |= reinterpret_cast<std::uintptr_t>(entry);
  if (ids || soap->mode & (SOAP_ENC_DIME | SOAP_ENC_MIME | SOAP_ENC_ZLIB) || (soap->mode & SOAP_IO) == SOAP_IO_CHUNK ||
      soap->xlist || soap->fpreparefinalrecv) {
    soap_xlist* const references = std::exchange(soap->xlist, nullptr);
    const int error = soap_end_recv(soap);
    soap->xlist = references;
    return error ? error : resolveAttachments(soap);
  }
  soap_pop_namespace(soap);
  soap->part = SOAP_END;
  return SOAP_OK;
}

void beginMessage(struct soap* soap) {
  if (soap->pblk || soap->nlist || soap->xlist)
    return soap_begin(soap);
  soap->error = SOAP_OK;
  if (!soap->keep_alive)
    soap->buflen = soap->bufidx = 0;
  soap->encoding = 0;
  soap->mode = 0;
  soap->part = SOAP_END;
  soap->peeked = 0;
  soap->ahead = 0;
  soap->level = 0;
  soap_set_namespaces(soap, soap->namespaces); // the request's, not those of the last answer
}

int beginEnvelope(struct soap* soap) {
  if (soap->namespaces != namespaces ||
      soap->mode & (SOAP_XML_CANONICAL | SOAP_XML_DOM | SOAP_XML_INDENT | SOAP_XML_DEFAULTNS))
    return soap_envelope_begin_out(soap);
  soap->part = SOAP_IN_ENVELOPE;
  if (soap_send(soap, soap->prolog) || soap_send(soap, "<SOAP-ENV:Envelope"))
    return soap->error;
  for (const Namespace* row = namespaces; row->id; ++row)
    for (const char* const text : {" xmlns:", row->id, "=\"", row->ns, "\""})
      if (soap_send(soap, text))
        return soap->error;
  soap->ns = 1; // the namespaces are declared
  ++soap->level;
  return soap_send(soap, ">");
}

bool countOnly(struct soap* soap, std::size_t size) {
  if (!(soap->mode & SOAP_IO_LENGTH))
    return false;
  soap->count += size;
  return true;
}

char* sendRoom(struct soap* soap, std::size_t& room) {
  const bool isBuffered = (soap->mode & SOAP_IO) != SOAP_IO_FLUSH;
  room = isBuffered ? sizeof soap->buf - soap->bufidx : 0;
  return isBuffered ? soap->buf + soap->bufidx : nullptr;
}

int forEachPending(struct soap* soap, int (*write)(struct soap* soap, const void* object, int id, int type)) {
  if (soap->version != 1 || !soap->encodingStyle || soap->mode & (SOAP_XML_TREE | SOAP_XML_GRAPH))
    return SOAP_OK;
  constexpr char independent = 2; // the runtime's mark; mark1 is that of the counting pass
  for (const soap_plist* const chain : soap->pht)
    for (const soap_plist* entry = chain; entry; entry = entry->next)
      if ((entry->mark1 == independent || entry->mark2 == independent) &&
          write(soap, entry->ptr, entry->id, entry->type))
        return soap->error;
  return SOAP_OK;
}

void releaseAll(struct soap* soap, SOAP_ENV__Header* header) {
  const bool hasHeader = soap->header != nullptr;
  soap_destroy(soap);
  soap_dealloc(soap, nullptr);
#if GSOAP_VERSION >= 208142
  // soap_dealloc keeps the blocks that held their entries, and the next object starts another one.
  while (soap->cblk)
    std::free(std::exchange(soap->cblk, soap->cblk->next));
  soap->cidx = 0;
#endif
  soap->header = hasHeader ? header : nullptr;
}

#if GSOAP_VERSION < 208142
void ContextMark::releaseLater() const {
  while (soap->clist != object)
    soap_delete(soap, soap->clist->ptr);
  // soap_malloc notes the next data and the size behind the data.
  while (soap->alist != data)
    soap_dealloc(soap, static_cast<char*>(soap->alist) - static_cast<std::size_t*>(soap->alist)[1]);
}
#else
void ContextMark::releaseLater() const {
  const auto releaseDownTo = [this](int count) {
    while (soap->cidx > count)
      if (void* const last = soap->cblk->clist[--soap->cidx].ptr) // null: released before
        soap_dealloc(soap, last);
  };
  while (soap->cblk != block) {
    releaseDownTo(0);
    std::free(std::exchange(soap->cblk, soap->cblk->next));
    soap->cidx = SOAP_PTRBLK;
  }
  if (block)
    releaseDownTo(used);
}
#endif

} // namespace tarnwell
