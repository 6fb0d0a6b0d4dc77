// What a type is, as constant data by which any type is read (Reader.h), written (Writer.h), made and copied.
// A context and everything in it belong to one thread at a time.
#pragma once

#include "protocol/binding/Row.h"
#include "protocol/runtime/Runtime.h"

#include <cstddef>

namespace tarnwell {

/// One name of an enumeration.
struct Enumerator {
  const char* text;
  int value;
};

struct Type;

/// What kind of content a type has: how its value is read and written between the element's tags. Functions return 0 or
/// the runtime's error code, which they also set in the context.
struct Codec {
  int (*read)(struct soap* soap, const Type& type, void* value);
  int (*write)(struct soap* soap, const Type& type, const void* value);
  /// The value is itself a pointer to characters in the context (guid, qualified name, text of a fault).
  bool characters = false;
  /// Of values that may travel as attachments, else null: marks one for output.
  void (*mark)(struct soap* soap, const Type& type, const void* value) = nullptr;
  /// What has to be done before the start tag of element `tag` is written; null: nothing. Sets the element's id.
  /// False: nothing is left to write, since it failed or the value is an attachment.
  bool (*announce)(struct soap* soap, const Type& type, const void* value, const char* tag, int& id,
                   const char* name) = nullptr;
};

/// One type of the binding.
struct Type {
  int number;
  const char* name; ///< schema type ("dsns:DesktopInfoClass"), or element of a message
  bool message;     ///< a request or response: `name` is its element
  const Codec* codec;
  std::size_t size; ///< of the value in memory, bytes
  const Row* rows;  ///< of a record, in wire order; otherwise null
  std::size_t rowCount;
  const Enumerator* names; ///< of an enumeration; otherwise null
  std::size_t nameCount;
  /// Local parts that an xsi:type may also have, between colons (":int:short:"); null: an xsi:type is not checked.
  const char* accepts;
  void (*setDefault)(struct soap* soap, void* value);
  void (*copy)(void* to, const void* from);
  /// New objects at their defaults; `count` below 0: one, else an array. Null: out of memory.
  void* (*create)(struct soap* soap, int count);
  void (*destroy)(void* value, bool array);
};

/// The type with this number, by the table of whoever uses the binding; null for a number of no type. Types have the
/// numbers from 1 on.
const Type* findType(int number) noexcept;
/// The type with this number. Requires: the number of a type.
const Type& typeOf(int number) noexcept;
/// The schema type called `name`, or the message whose element is called `element`, by the prefixes of the message that
/// is being read; null if there is neither.
const Type* findTypeNamed(struct soap* soap, const char* name, const char* element);

/// Makes one object (`count` below 0) or an array in the context, which deletes it. `size`, if given, gets its bytes.
void* instantiate(struct soap* soap, int count, const Type& type, std::size_t* size);
/// The runtime's callback for a resolved forward reference: copies *from over *to if both are of one type.
void resolve(struct soap* soap, int sourceType, int targetType, void* to, std::size_t index, const void* from,
             void** shared);
/// The same for a simple value; `from` points to the pointer to it. The runtime calls it earlier and only once, while
/// for resolve() it compares each reference with all ids.
void resolveValue(struct soap* soap, int sourceType, int targetType, void* to, std::size_t index, const void* from,
                  void** shared);

} // namespace tarnwell
