// The data of a type (Type.h), from the class that holds its values and the rows beside that class: what a type table
// is written with.
#pragma once

#include "protocol/binding/Codecs.h"

#include <new>

namespace tarnwell {

/// The rows of a record as static data.
template <class T> constexpr auto rowsOf = T::rows();

template <class T> void setContext([[maybe_unused]] T& value, [[maybe_unused]] struct soap* soap) {
  if constexpr (requires { value.soap; })
    value.soap = soap;
}

/// A type held as `T`. `accepts`, of a simple type: local parts that its xsi:type may have besides its own name.
template <class T>
constexpr Type describe(int number, const char* name, const Codec& codec, const char* accepts = nullptr) {
  Type type{};
  type.number = number;
  type.name = name;
  type.codec = &codec;
  type.accepts = accepts;
  type.size = sizeof(T);
  type.setDefault = [](struct soap* soap, void* value) {
    *static_cast<T*>(value) = T();
    setContext(*static_cast<T*>(value), soap);
  };
  type.copy = [](void* to, const void* from) { *static_cast<T*>(to) = *static_cast<const T*>(from); };
  type.create = [](struct soap* soap, int count) -> void* {
    T* const made = count < 0 ? new (std::nothrow) T() : new (std::nothrow) T[static_cast<std::size_t>(count)]();
    for (int i = 0; made && i < (count < 0 ? 1 : count); ++i)
      setContext(made[i], soap);
    return made;
  };
  type.destroy = [](void* value, bool isArray) {
    if (isArray)
      delete[] static_cast<T*>(value);
    else
      delete static_cast<T*>(value);
  };
  if constexpr (requires { T::rows(); }) {
    type.rows = rowsOf<T>.data();
    type.rowCount = rowsOf<T>.size();
    static_assert(rowsOf<T>.size() <= sizeof(long) * 8, "the reader marks rows in one word");
  }
  return type;
}

template <class T, std::size_t count>
constexpr Type enumeration(int number, const char* name, const Enumerator (&names)[count]) {
  Type type = describe<T>(number, name, enumerationCodec, "");
  type.names = names;
  type.nameCount = count;
  return type;
}

template <class T> constexpr Type record(const char* name, const Codec& codec = recordCodec) {
  return describe<T>(T::number, name, codec);
}

template <class T> constexpr Type message(const char* element) {
  Type type = record<T>(element);
  type.message = true;
  return type;
}

} // namespace tarnwell
