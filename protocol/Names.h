// The named functions of the binding, the family that exists for every type, from one macro. They are what users of a
// gSOAP binding look for by name; each is one call into the engine (Type.h), where arguments and results are described.
#pragma once

#include "protocol/Messages.h"
#include "protocol/Type.h"

#define TARNWELL_NAMES(T)                                                                                              \
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

TARNWELL_NAMES(xsd__byte)
TARNWELL_NAMES(xsd__unsignedByte)
TARNWELL_NAMES(xsd__int)
TARNWELL_NAMES(xsd__unsignedInt)
TARNWELL_NAMES(xsd__float)
TARNWELL_NAMES(xsd__boolean)
TARNWELL_NAMES(xsd__dateTime)
TARNWELL_NAMES(xsd__string)
TARNWELL_NAMES(xsd__QName)
TARNWELL_NAMES(dsns2__guid)
TARNWELL_NAMES(dsns__DesktopLoginEnumerators)
TARNWELL_NAMES(dsns__DesktopMapAccess)
TARNWELL_NAMES(xsd__base64Binary)
TARNWELL_NAMES(dsns__DesktopLoginResponseClass)
TARNWELL_NAMES(dsns__DesktopInfoClass)
TARNWELL_NAMES(dsns__ArrayOfDesktopInfoClass)
TARNWELL_NAMES(dsns__CompleteDesktopResponse)
TARNWELL_NAMES(dsns__GetMapResponse)
TARNWELL_NAMES(dsns__MapActionResponse)
TARNWELL_NAMES(dsns__DesktopVersioningClass)
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  TARNWELL_NAMES(_dsns__##Name) TARNWELL_NAMES(_dsns__##Name##Response)
#include "protocol/Operations.inc"
#undef TARNWELL_OPERATION

/// The text of an enumeration's value: its name, or the decimal number when it has none.
const char* soap_dsns__DesktopLoginEnumerators2s(struct soap* soap, dsns__DesktopLoginEnumerators value);
const char* soap_dsns__DesktopMapAccess2s(struct soap* soap, dsns__DesktopMapAccess value);
/// The value of a text. Returns 0, or 4 (type error) when it is neither a name nor a number.
int soap_s2dsns__DesktopLoginEnumerators(struct soap* soap, const char* text, dsns__DesktopLoginEnumerators* value);
int soap_s2dsns__DesktopMapAccess(struct soap* soap, const char* text, dsns__DesktopMapAccess* value);
