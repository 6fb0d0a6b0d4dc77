// The functions that users of a gSOAP binding look for by name, the family that exists for every type, from one macro.
// Each is one call of the reader, the writer or the type table, where arguments and results are described.
#pragma once

#include "protocol/binding/Reader.h"
#include "protocol/binding/Writer.h"

#define TARNWELL_NAMED_FUNCTIONS(T)                                                                                    \
  inline void soap_default_##T(struct soap* soap, T* a) { tarnwell::typeOf(SOAP_TYPE_##T).setDefault(soap, a); }       \
  inline void soap_serialize_##T(struct soap* soap, const T* a) {                                                      \
    tarnwell::serialize(soap, a, tarnwell::typeOf(SOAP_TYPE_##T));                                                     \
  }                                                                                                                    \
  inline int soap_out_##T(struct soap* soap, const char* tag, int id, const T* a, const char* type) {                  \
    return tarnwell::writeElement(soap, tag, id, a, type, tarnwell::typeOf(SOAP_TYPE_##T));                            \
  }                                                                                                                    \
  inline T* soap_in_##T(struct soap* soap, const char* tag, T* a, const char* type) {                                  \
    return static_cast<T*>(tarnwell::readElement(soap, tag, a, type, tarnwell::typeOf(SOAP_TYPE_##T)));                \
  }                                                                                                                    \
  inline int soap_put_##T(struct soap* soap, const T* a, const char* tag, const char* type) {                          \
    return tarnwell::writeIndependent(soap, tag, a, type, tarnwell::typeOf(SOAP_TYPE_##T));                            \
  }                                                                                                                    \
  inline T* soap_get_##T(struct soap* soap, T* a, const char* tag, const char* type) {                                 \
    return static_cast<T*>(tarnwell::readIndependent(soap, tag, a, type, tarnwell::typeOf(SOAP_TYPE_##T)));            \
  }                                                                                                                    \
  inline T* soap_instantiate_##T(struct soap* soap, int n, const char*, const char*, std::size_t* size) {              \
    return static_cast<T*>(tarnwell::instantiate(soap, n, tarnwell::typeOf(SOAP_TYPE_##T), size));                     \
  }                                                                                                                    \
  inline void soap_copy_##T(struct soap* soap, int st, int tt, void* p, std::size_t index, const void* q, void** x) {  \
    tarnwell::resolve(soap, st, tt, p, index, q, x);                                                                   \
  }                                                                                                                    \
  inline int soap_out_PointerTo##T(struct soap* soap, const char* tag, int id, T* const* a, const char* type) {        \
    return tarnwell::writePointer(soap, tag, id, reinterpret_cast<const void* const*>(a), type,                        \
                                  tarnwell::typeOf(SOAP_TYPE_##T));                                                    \
  }                                                                                                                    \
  inline T** soap_in_PointerTo##T(struct soap* soap, const char* tag, T** a, const char* type) {                       \
    return static_cast<T**>(tarnwell::readPointer(soap, tag, a, type, tarnwell::typeOf(SOAP_TYPE_##T)));               \
  }
