// Reading elements: what the codecs (Codecs.cpp, Envelope.cpp) share of the reader's inside. Functions return 0 or the
// runtime's error code, which they also set in the context.
#pragma once

#include "protocol/Type.h"

namespace tarnwell {

/// Elements nested deeper than this are skipped instead of read: hosts call from threads with small stacks.
inline constexpr unsigned maximumDepth = 32;

/// Looks at the next start tag without taking it. As the runtime's, but "href" counts in SOAP 1.2 messages too.
/// SOAP_NO_TAG: there is none before the parent's end.
int peekElement(struct soap* soap);
/// Takes the start tag `tag` (null: any).
int beginElement(struct soap* soap, const char* tag, bool nillable);
/// Takes the end tag of the element that is open.
int endElement(struct soap* soap, const char* tag);
/// Takes the element just peeked at with everything in it.
int skipElement(struct soap* soap);

/// Reads the children of a record by its rows: each at most once, in any order; the rest is skipped.
int readRecord(struct soap* soap, const Type& type, void* record);

} // namespace tarnwell
