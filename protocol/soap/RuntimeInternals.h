// Everything that copies or relies on the inside of the runtime: its receive and send buffers, its list of objects, and
// faster equivalents of some of its functions, each beside the name of the one that it replaces. A new release of the
// runtime means reading this pair of files. One thread at a time, as the context. Functions that return int return 0 or
// the runtime's error code, which they also set in the context.
#pragma once

#include "protocol/soap/Runtime.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace tarnwell {

// What the runtime's soap_get() returns for "</" and for another "<"; its header keeps these to itself.
inline constexpr soap_wchar endTagMark = -3;
inline constexpr soap_wchar startTagMark = -2;

/// White space as the runtime sees it: all control characters.
constexpr bool isBlank(int character) { return character >= 0 && character <= ' '; }

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

/// soap_peek_element: looks at the next start tag without taking it. Faster for a tag without attributes, or an end
/// tag, that is whole in the buffer; and "href" counts in SOAP 1.2 messages too. SOAP_NO_TAG: there is none before the
/// parent's end.
int peekElement(struct soap* soap);
/// soap_element_begin_in of any name for the element that was peeked at, without looking at it again.
int takeElement(struct soap* soap, bool isNillable);
/// Whether peekElement() has found text, and not an end tag, in the place of a start tag.
inline bool isBeforeText(const struct soap* soap) {
  return soap->peeked && !*soap->tag && soap->ahead && soap->ahead != endTagMark;
}
/// soap_element_end_in: takes the end tag of the element that is open. Faster when it is whole in the buffer.
int endElement(struct soap* soap, const char* tag);
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
/// soap_end_recv, without two walks through the chains of all ids when the answer is plain and no element had one.
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

/// Whether the context holds objects or data.
inline bool holdsAnything(const struct soap* soap) { return soap->clist || soap->alist; }
/// soap_delete of the object of `entry`, without searching for it: an answer's objects stand before it in the list. The
/// first entry's content moves into `entry`, so that pointers to the first entry are no longer valid.
void deleteObject(struct soap* soap, soap_clist* entry);
/// Deletes the objects and data that the context has got since `object` and `data` were its last ones.
void deleteSince(struct soap* soap, const soap_clist* object, const void* data);

} // namespace tarnwell
