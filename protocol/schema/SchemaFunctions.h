// The named functions of every type: built-in types, envelope, schema and messages.
#pragma once

#include "protocol/binding/Codecs.h"
#include "protocol/binding/NamedFunctions.h"
#include "protocol/schema/Envelope.h"
#include "protocol/schema/Messages.h"

TARNWELL_NAMED_FUNCTIONS(xsd__byte)
TARNWELL_NAMED_FUNCTIONS(xsd__unsignedByte)
TARNWELL_NAMED_FUNCTIONS(xsd__int)
TARNWELL_NAMED_FUNCTIONS(xsd__unsignedInt)
TARNWELL_NAMED_FUNCTIONS(xsd__float)
TARNWELL_NAMED_FUNCTIONS(xsd__boolean)
TARNWELL_NAMED_FUNCTIONS(xsd__dateTime)
TARNWELL_NAMED_FUNCTIONS(xsd__string)
TARNWELL_NAMED_FUNCTIONS(xsd__QName)
TARNWELL_NAMED_FUNCTIONS(SOAP_ENV__Header)
TARNWELL_NAMED_FUNCTIONS(SOAP_ENV__Code)
TARNWELL_NAMED_FUNCTIONS(SOAP_ENV__Reason)
TARNWELL_NAMED_FUNCTIONS(SOAP_ENV__Detail)
TARNWELL_NAMED_FUNCTIONS(SOAP_ENV__Fault)
TARNWELL_NAMED_FUNCTIONS(dsns2__guid)
TARNWELL_NAMED_FUNCTIONS(dsns__DesktopLoginEnumerators)
TARNWELL_NAMED_FUNCTIONS(dsns__DesktopMapAccess)
TARNWELL_NAMED_FUNCTIONS(xsd__base64Binary)
TARNWELL_NAMED_FUNCTIONS(dsns__DesktopLoginResponseClass)
TARNWELL_NAMED_FUNCTIONS(dsns__DesktopInfoClass)
TARNWELL_NAMED_FUNCTIONS(dsns__ArrayOfDesktopInfoClass)
TARNWELL_NAMED_FUNCTIONS(dsns__CompleteDesktopResponse)
TARNWELL_NAMED_FUNCTIONS(dsns__GetMapResponse)
TARNWELL_NAMED_FUNCTIONS(dsns__MapActionResponse)
TARNWELL_NAMED_FUNCTIONS(dsns__DesktopVersioningClass)
#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  TARNWELL_NAMED_FUNCTIONS(_dsns__##Name) TARNWELL_NAMED_FUNCTIONS(_dsns__##Name##Response)
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION

/// The text of an enumeration's value: its name, or the decimal number when it has none.
inline const char* soap_dsns__DesktopLoginEnumerators2s(struct soap* soap, dsns__DesktopLoginEnumerators value) {
  return tarnwell::enumerationText(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopLoginEnumerators), value);
}
inline const char* soap_dsns__DesktopMapAccess2s(struct soap* soap, dsns__DesktopMapAccess value) {
  return tarnwell::enumerationText(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopMapAccess), value);
}
/// The value of a text. Returns 0, or 4 (type error) when it is null or neither a name nor a number.
inline int soap_s2dsns__DesktopLoginEnumerators(struct soap* soap, const char* text,
                                                dsns__DesktopLoginEnumerators* value) {
  return tarnwell::enumerationValue(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopLoginEnumerators), text, value);
}
inline int soap_s2dsns__DesktopMapAccess(struct soap* soap, const char* text, dsns__DesktopMapAccess* value) {
  return tarnwell::enumerationValue(soap, tarnwell::typeOf(SOAP_TYPE_dsns__DesktopMapAccess), text, value);
}
