// Converts between the messages' records (protocol/) and the store's rows, and makes the objects of a response. Used by
// the operations (Handlers.cpp). A context and everything in it belong to one thread at a time.
#pragma once

#include "localservice/Store.h"
#include "protocol/desktopservice.h"

#include <new>
#include <string>

namespace localservice {

/// A new object at its defaults, which the context owns. Throws std::bad_alloc.
template <class T> T* create(struct soap* soap) {
  void* const object = tarnwell::instantiate(soap, -1, tarnwell::typeOf(tarnwell::typeNumber<T>), nullptr);
  if (!object)
    throw std::bad_alloc();
  return static_cast<T*>(object);
}

// From requests to the store. Null stays null. The context owns texts, the request owns bytes.

/// UTF-8. Throws std::bad_alloc.
const char* utf8(struct soap* soap, const std::wstring* text);
Bytes bytesOf(const xsd__base64Binary* block);
/// Throws std::bad_alloc.
MapRecord recordOf(struct soap* soap, const dsns__DesktopInfoClass& info);

// From the store to responses. The context owns what these functions return: copies of the store's values. They throw
// std::bad_alloc.

std::wstring* wide(struct soap* soap, const char* text);
/// Name, author and description are empty when they were never given: clients rely on these elements.
dsns__DesktopInfoClass* infoOf(struct soap* soap, const MapRecord& map);

} // namespace localservice
