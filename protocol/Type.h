// The binding's engine: what a type is, as constant data, and the functions that read, write, create and copy any
// type by that data. Every named function of the binding (Names.h) is one call into here.
// A context and everything in it belong to one thread at a time.
#pragma once

#include "protocol/Context.h"
#include "protocol/Row.h"

#include <cstddef>

namespace tarnwell {

/// One name of an enumeration.
struct Enumerator {
  const char* text;
  int value;
};

struct Type;

/// What kind of content a type has: how its value is read and written between the element's tags. Both return 0 or
/// the runtime's error code, which they also set in the context.
struct Codec {
  int (*read)(struct soap* soap, const Type& type, void* value);
  int (*write)(struct soap* soap, const Type& type, const void* value);
  /// The value is itself a pointer to characters in the context (guid, qualified name, text of a fault).
  bool characters;
};

/// One type of the binding.
struct Type {
  TypeNumber number;
  const char* name; ///< schema type ("dsns:DesktopInfoClass"), or element of a message
  bool message;     ///< a request or response: `name` is its element
  const Codec* codec;
  std::size_t size; ///< of the value in memory, bytes
  const Row* rows;  ///< of a record, in wire order; otherwise null
  std::size_t rowCount;
  const Enumerator* names; ///< of an enumeration; otherwise null
  std::size_t nameCount;
  const char*
      accepts; ///< local parts that an xsi:type may also have (":boolean"), each with its colon; null: not checked
  void (*setDefault)(struct soap* soap, void* value);
  void (*copy)(void* to, const void* from);
  /// New objects at their defaults; `count` below 0: one, else an array. Null: out of memory.
  void* (*create)(struct soap* soap, int count);
  void (*destroy)(void* value, bool array);
};

/// The type with this number; the numbers of no type give null.
const Type* findType(int number) noexcept;
/// The type with this number, which must be one of SOAP_TYPE_.
const Type& typeOf(TypeNumber number) noexcept;
/// The schema type called `name`, or the message whose element is called `element`, by the prefixes of the message that
/// is being read; null if there is neither.
const Type* findTypeNamed(struct soap* soap, const char* name, const char* element);

/// Reads element `tag` into `value`, or into a new object in the context when `value` is null. `name`, when not empty,
/// is the schema type that an xsi:type has to name. Returns the object, or null with the context's error set.
void* readElement(struct soap* soap, const char* tag, void* value, const char* name, const Type& type);
/// The same for an element held by pointer: nil gives null, "href" is resolved now or later. `slot` may be null.
void* readPointer(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type);
/// readElement, then everything that follows in the same parent.
void* readIndependent(struct soap* soap, const char* tag, void* value, const char* name, const Type& type);

/// Writes `value` as element `tag`, with xsi:type when `name` is not empty. Returns 0 or the runtime's error code.
int writeElement(struct soap* soap, const char* tag, int id, const void* value, const char* name, const Type& type);
/// The same for an element held by pointer; a null one is left out.
int writePointer(struct soap* soap, const char* tag, int id, const void* const* slot, const char* name,
                 const Type& type);
/// writeElement as a top-level element (default tag: the type's name), then the pending multi-reference elements.
int writeIndependent(struct soap* soap, const char* tag, const void* value, const char* name, const Type& type);

/// Marks the objects below `value` for multi-reference output.
void serialize(struct soap* soap, const void* value, const Type& type);

/// Makes one object (`count` below 0) or an array in the context, which deletes it. `size`, if given, gets its bytes.
void* instantiate(struct soap* soap, int count, const Type& type, std::size_t* size);
/// The runtime's call-back for a resolved forward reference: copies *from over *to, or puts a list's entry in place.
void resolve(struct soap* soap, int sourceType, int targetType, void* to, std::size_t index, const void* from,
             void** shared);

} // namespace tarnwell
