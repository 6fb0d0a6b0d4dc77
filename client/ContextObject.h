// Owner of one object that a call needs, for the length of a scope. Used by the client and the service; one thread at a
// time, as its context.
#pragma once

#include "protocol/desktopservice.h"
#include "protocol/runtime/RuntimeInternals.h"

#include <memory>
#include <new>

/// A new `T` at its defaults, with its context. The end of the scope deletes it, but nothing that it points to. The
/// context does not know it, since it would look for it behind all objects of an answer. Without a context it holds
/// null. Throws std::bad_alloc.
template <class T> class ContextObject {
public:
  explicit ContextObject(struct soap* soap) : m_object(soap ? new T : nullptr) {
    if (m_object)
      m_object->soap = soap;
  }

  T* get() const { return m_object.get(); }
  T* operator->() const { return get(); }
  T& operator*() const { return *m_object; }
  /// Hands the object over to the context, which keeps it until its objects are released. Throws std::bad_alloc.
  T* release() {
    T* const object = m_object.release();
    if (object && !tarnwell::own<destroy>(object->soap, object, T::number, -1))
      throw std::bad_alloc();
    return object;
  }

private:
  static void destroy(void* object, int, bool) { delete static_cast<T*>(object); }

  std::unique_ptr<T> m_object;
};
