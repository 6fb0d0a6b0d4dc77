// Everything that copies or relies on the inside of the runtime: how a context is set up, its receive and send buffers,
// its list of objects, and faster equivalents of some of its functions, each beside the name of the one that it
// replaces. A new release of the runtime means reading this pair of files. One thread at a time, as the context.
// Functions that return int return 0 or the runtime's error code, which they also set in the context.
#pragma once

#include "protocol/runtime/Runtime.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace tarnwell {

// What the runtime's soap_get() returns for "</" and for another "<"; its header keeps these to itself.
inline constexpr soap_wchar endTagMark = -3;
inline constexpr soap_wchar startTagMark = -2;

/// White space as the runtime sees it: all control characters.
constexpr bool isBlank(int character) { return character >= 0 && character <= ' '; }

/// Bytes of the largest block or attachment that is read: what a QByteArray, whose size is an int, holds together with
/// its header.
inline constexpr std::size_t largestBlock = 2147483000;

// --- The context

/// Sets up a new context for a client: no SIGPIPE, no standard streams, no end of a call by a signal, socket buffers of
/// the system's size, attachments no longer than their answer, an end to what costs too much while it arrives.
void setUpClient(struct soap* soap);

/// The uses of the pointers that a context keeps for whoever uses the runtime.
enum class UserData {
  Chunks,    ///< Chunks.h
  Receiver,  ///< Receiver.h
  SpareText, ///< RuntimeCallbacks.cpp
};
inline void*& userData(struct soap* soap, UserData use) { return soap->data[static_cast<std::size_t>(use)]; }

// --- Receiving

/// The bytes that have arrived and are not read yet. At the end of an answer the runtime may have stepped back to
/// before its buffer.
inline std::string_view unread(const struct soap* soap) {
  const bool some = soap->bufidx < soap->buflen;
  return {soap->buf + (some ? soap->bufidx : 0), some ? soap->buflen - soap->bufidx : 0};
}
/// Reads past `size` bytes of them.
inline void skipUnread(struct soap* soap, std::size_t size) { soap->bufidx += size; }
/// Whether the next character that the runtime reads is the first of unread(): none was given back, no CDATA section is
/// open.
inline bool readsBuffer(const struct soap* soap) { return !soap->ahead && !soap->cdata; }
/// Bytes of the message that may follow unread(), as its Content-Length says; 0: not known.
ULONG64 expectedBytes(const struct soap* soap);

/// Skips processing instructions, and blanks, before the next tag: the runtime takes the first "?" in one for its end.
void skipInstructions(struct soap* soap);
/// soap_peek_element: looks at the next start tag without taking it. Faster for a tag without attributes, or an end
/// tag, that is whole in the buffer; "href" counts in SOAP 1.2 messages too; processing instructions may hold a "?".
/// SOAP_NO_TAG: there is none before the parent's end. SOAP_OCCURS: too many names, or too many ids that the runtime
/// keeps in one list, since it searches that for each.
int peekElement(struct soap* soap);
/// soap_element_begin_in: takes the start tag `tag` (null: any). Faster for one of any name, found by peekElement().
inline int takeElement(struct soap* soap, const char* tag, bool isNillable) {
  if (!soap->peeked || !*soap->tag || tag || soap->mode & SOAP_XML_STRICT || soap->other)
    return peekElement(soap) ? soap->error : soap_element_begin_in(soap, tag, isNillable, nullptr);
  soap->peeked = 0;
  return soap->error = soap->body && ++soap->level > soap->maxlevel ? SOAP_LEVEL : SOAP_OK;
}
/// Whether an element has more attributes, with the namespaces in force, than peekElement() reads: for each of these
/// names the runtime searches all of them.
bool hasTooManyNames(const struct soap* soap);
/// Whether peekElement() has found text, and not an end tag, in the place of a start tag.
inline bool isBeforeText(const struct soap* soap) {
  return soap->peeked && !*soap->tag && soap->ahead && soap->ahead != endTagMark;
}
/// What soap_element_end_in does, faster, for an end tag that comes next and is whole in the buffer. False: it is
/// something else, and nothing was done.
bool takeEndTag(struct soap* soap);
/// soap_match_tag of the element peeked at, for a `name` whose local part, `local`, is known to be that of the element.
/// Faster for an element without prefix in the default namespace.
inline bool hasName(struct soap* soap, const char* name, const char* local, bool isPrefixed) {
  const soap_nlist* const innermost = soap->nlist;
  if (local != name && !isPrefixed && innermost && !*innermost->id && innermost->index >= 0) {
    const auto size = static_cast<std::size_t>(local - name - 1);
    const char* const prefix = soap->local_namespaces[innermost->index].id;
    if (prefix && std::strncmp(prefix, name, size) == 0 && !prefix[size])
      return true;
  }
  return soap_match_tag(soap, soap->tag, name) == SOAP_OK;
}
/// soap_end_recv, without two walks through the chains of all ids when the answer is plain and no element had one. An
/// attachment of more than largestBlock bytes is an error, and those referred to are found without comparing each with
/// all references.
int endReceive(struct soap* soap);

// --- Sending

/// soap_begin, without clearing the tables of ids and pointers when nothing is left of a request: soap_begin_recv
/// clears them too, and their fifty kilobytes take longer than writing a small request.
void beginMessage(struct soap* soap);
/// soap_envelope_begin_out for the table `namespaces`, as it stands: the runtime looks twice at every character of it
/// for something to escape, which takes longer than all the rest of a small request.
int beginEnvelope(struct soap* soap);
/// In the pass that counts the message: counts `size` bytes. False in the one that sends.
bool countOnly(struct soap* soap, std::size_t size);
/// The room of the send buffer, `room` bytes; null, and 0, when the runtime sends without one.
char* sendRoom(struct soap* soap, std::size_t& room);
/// Counts `size` bytes that were written there.
inline void extendSent(struct soap* soap, std::size_t size) { soap->bufidx += size; }

/// Calls `write` for each object that soap_reference found twice and whose element is to stand on its own, which only
/// SOAP 1.1 with an encoding style has, until one fails.
int forEachPending(struct soap* soap, int (*write)(struct soap* soap, const void* object, int id, int type));

// --- Objects

/// soap_link with a new object, which the context owns from now on and ends with destroy(object, type, isArray);
/// `count` below 0: it is no array. Returns the object; null when it is null or there is no memory for its entry, and
/// then it is destroyed.
template <auto destroy> void* own(struct soap* soap, void* object, int type, int count) {
  constexpr auto end = [](struct soap*, soap_clist* entry) -> int {
    destroy(entry->ptr, entry->type, entry->size >= 0);
    return SOAP_OK;
  };
#if GSOAP_VERSION < 208142
  soap_clist* const entry = object ? soap_link(soap, type, count, end) : nullptr;
  if (entry)
    return entry->ptr = object;
#else // keeps its objects in a table by address
  soap_clist* const entry = object ? soap_new_link(soap, type, count, end) : nullptr;
  if (entry) {
    soap_set_link(soap, entry, object);
    return object;
  }
#endif
  if (object)
    destroy(object, type, count >= 0);
  soap->error = SOAP_EOM;
  return nullptr;
}
/// soap_destroy and soap_dealloc: deletes all objects and data. The header of an earlier answer, if there is one, gives
/// way to `header`.
void releaseAll(struct soap* soap, SOAP_ENV__Header* header);
/// The objects and data of a context at one moment.
struct ContextMark {
  struct soap* soap;
#if GSOAP_VERSION < 208142
  const soap_clist* object = soap->clist;
  const void* data = soap->alist;
#else // whose entries of objects and data stand in blocks in their order
  const soap_cblk* block = soap->cblk;
  int used = soap->cidx;
#endif
  /// soap_delete and soap_dealloc of all that the context has got since, the last first, which is found at once.
  void releaseLater() const;
};

} // namespace tarnwell
