// Owner of one object inside a runtime context, for the length of a scope. Used by the client and the service; one
// thread at a time, as its context.
#pragma once

#include "protocol/desktopservice.h"

#include <new>
#include <utility>

/// A new `T` at its defaults. The end of the scope deletes it from the context, but nothing that it points to.
/// Without a context it holds null. Throws std::bad_alloc.
template <class T> class ContextObject {
public:
  explicit ContextObject(struct soap* soap) : m_soap(soap), m_object(soap ? make(soap) : nullptr) {}
  ContextObject(const ContextObject&) = delete;
  ContextObject& operator=(const ContextObject&) = delete;
  ~ContextObject() {
    if (m_object)
      soap_delete(m_soap, m_object);
  }

  T* get() const { return m_object; }
  T* operator->() const { return m_object; }
  T& operator*() const { return *m_object; }
  /// Leaves the object to the context, which keeps it until it dies.
  T* release() { return std::exchange(m_object, nullptr); }

private:
  static T* make(struct soap* soap) {
    if (void* object = tarnwell::instantiate(soap, -1, tarnwell::typeOf(T::number), nullptr))
      return static_cast<T*>(object);
    throw std::bad_alloc();
  }

  struct soap* m_soap;
  T* m_object;
};
