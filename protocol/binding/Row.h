// How a record's elements are declared: one row per element, beside the class, in wire order. Constant data without
// start-up code; the engine (Type.h) walks it.
#pragma once

#include "protocol/binding/BuiltinTypes.h"

#include <cstddef>
#include <type_traits>
#include <vector>

struct soap;

namespace tarnwell {

/// How often an element occurs in its record, and how its member holds it.
enum class Occurs : unsigned char {
  Required,         ///< 1..1, the member is the value
  RequiredNillable, ///< 1..1, the member is a pointer; null is written with xsi:nil="true"
  Optional,         ///< 0..1, the member is a pointer; null is left out
  Repeated,         ///< 0..unbounded, the member is a vector of pointers; null entries are left out
};

/// What the engine does with a vector of pointers.
struct ListAccess {
  std::size_t (*size)(const void* list);
  const void* (*at)(const void* list, std::size_t index);
  void (*append)(void* list, void* entry);
  /// The runtime's callback for an entry that was a forward reference: `entry` points to the pointer to store.
  void (*place)(struct soap*, int sourceType, int targetType, void* list, std::size_t index, const void* entry, void**);
};

/// One element of a record.
struct Row {
  const char* tag;   ///< "dsns:MapName"
  const char* local; ///< "MapName"
  Occurs occurs;
  int type;                      ///< number of the type of the value, or of what the pointer points to
  void* (*member)(void* record); ///< where the member is in its record
  const ListAccess* list;        ///< of a repeated element; otherwise null
};

template <class Entry>
inline constexpr ListAccess listAccess = {
    [](const void* list) { return static_cast<const std::vector<Entry*>*>(list)->size(); },
    [](const void* list, std::size_t i) -> const void* { return (*static_cast<const std::vector<Entry*>*>(list))[i]; },
    [](void* list, void* entry) { static_cast<std::vector<Entry*>*>(list)->push_back(static_cast<Entry*>(entry)); },
    [](struct soap*, int, int, void* list, std::size_t index, const void* entry, void**) {
      (*static_cast<std::vector<Entry*>*>(list))[index] = *static_cast<Entry* const*>(entry);
    },
};

/// Takes a pointer to member apart and derives from the member's type how the element occurs.
template <class Member> struct MemberTraits;
template <class Record, class Value> struct MemberTraits<Value Record::*> {
  static constexpr Occurs occurs = Occurs::Required;
  static constexpr const ListAccess* list = nullptr;
  using Target = Value;
};
template <class Record, class Value> struct MemberTraits<Value * Record::*> : MemberTraits<Value Record::*> {
  static constexpr Occurs occurs = Occurs::Optional;
};
template <class Record, class Value>
struct MemberTraits<std::vector<Value*> Record::*> : MemberTraits<Value Record::*> {
  static constexpr Occurs occurs = Occurs::Repeated;
  static constexpr const ListAccess* list = &listAccess<Value>;
};

/// The part of a qualified name behind its prefix.
constexpr const char* localPart(const char* name) {
  for (const char* at = name; *at; ++at)
    if (*at == ':')
      return at + 1;
  return name;
}

/// The row of a member, found by `member` in its record of class `Record`. A member that holds characters names its
/// type, which its C++ type does not tell.
template <class Record, auto member, class Traits = MemberTraits<decltype(member)>>
constexpr Row row(const char* tag, int type = typeNumber<typename Traits::Target>, Occurs occurs = Traits::occurs) {
  constexpr auto memberOf = [](void* record) -> void* { return &(static_cast<Record*>(record)->*member); };
  return {tag, localPart(tag), occurs, type, memberOf, Traits::list};
}

} // namespace tarnwell
