// Reading elements by the data of their types. Functions return 0 or the runtime's error code, which they also set in
// the context.
#pragma once

#include "protocol/binding/Type.h"

namespace tarnwell {

/// Reads element `tag` into `value`, or into a new object in the context when `value` is null. `name`, when not empty,
/// is the schema type that an xsi:type has to name. Returns the object, or null with the context's error set.
void* readElement(struct soap* soap, const char* tag, void* value, const char* name, const Type& type);
/// The same for an element held by pointer: nil gives null, "href" is resolved now or later. `slot` may be null.
void* readPointer(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type);
/// readElement, then everything that follows in the same parent.
void* readIndependent(struct soap* soap, const char* tag, void* value, const char* name, const Type& type);

/// Reads an element whose type is not known in advance: the type under which its id was referred to before, else the
/// one that its xsi:type or its name says. Returns the object and its type's number; null with a tag mismatch, and the
/// element still there, when none of these is known.
void* readAnyElement(struct soap* soap, const char* tag, int* number);
/// Reads what follows an element in its parent: targets of references are kept, the rest is skipped.
int readFollowing(struct soap* soap);

// --- For codecs

/// Elements nested deeper than this are skipped instead of read: hosts call from threads with small stacks.
inline constexpr unsigned maximumDepth = 32;

/// Skips an element that no row takes. One with an id is read by its own type and kept as a target of references.
/// Refused: one that must be understood, one of the envelope's namespace, in strict mode any but, where elements are
/// `independent`, such a target.
int skipUnknown(struct soap* soap, bool independent = false);

/// Reads the children of a record by its rows: each at most once, in any order; the rest is skipped.
int readRecord(struct soap* soap, const Type& type, void* record);

} // namespace tarnwell
