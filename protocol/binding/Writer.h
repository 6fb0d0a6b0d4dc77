// Writing elements by the data of their types. Functions return 0 or the runtime's error code, which they also set in
// the context.
#pragma once

#include "protocol/binding/Type.h"

namespace tarnwell {

/// Writes `value` as element `tag`, with xsi:type when `name` is not empty. Returns 0 or the runtime's error code.
int writeElement(struct soap* soap, const char* tag, int id, const void* value, const char* name, const Type& type);
/// The same for an element held by pointer; a null one is left out.
int writePointer(struct soap* soap, const char* tag, int id, const void* const* slot, const char* name,
                 const Type& type);
/// Writes the elements of objects that are referred to more than once: only SOAP 1.1 with an encoding style has them,
/// SOAP 1.2 writes such objects in place.
int writePending(struct soap* soap);
/// writeElement as a top-level element (default tag: the type's name), then the pending ones.
int writeIndependent(struct soap* soap, const char* tag, const void* value, const char* name, const Type& type);

/// Writes any object by the number of its type.
int writeAnyElement(struct soap* soap, const void* value, const char* tag, int id, int number);

/// Marks the objects below `value` for multi-reference output.
void serialize(struct soap* soap, const void* value, const Type& type);

/// Writes the children of a record by its rows, in their order: for codecs.
int writeRecord(struct soap* soap, const Type& type, const void* record);

} // namespace tarnwell
