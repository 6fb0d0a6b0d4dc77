// The number of every type that the binding reads and writes: what soap_type() returns, what the runtime keeps
// beside an object, and the type's place in the type table (Types.cpp).
#pragma once

enum TypeNumber : int {
  SOAP_TYPE_unknown = 0,
  SOAP_TYPE_xsd__byte,
  SOAP_TYPE_xsd__unsignedByte,
  SOAP_TYPE_xsd__int,
  SOAP_TYPE_xsd__unsignedInt,
  SOAP_TYPE_xsd__float,
  SOAP_TYPE_xsd__boolean,
  SOAP_TYPE_xsd__dateTime,
  SOAP_TYPE_xsd__string,
  SOAP_TYPE_xsd__QName,
  SOAP_TYPE_string,
  SOAP_TYPE_dsns2__guid,
  SOAP_TYPE_dsns__DesktopLoginEnumerators,
  SOAP_TYPE_dsns__DesktopMapAccess,
  SOAP_TYPE_xsd__base64Binary,
  SOAP_TYPE_dsns__DesktopLoginResponseClass,
  SOAP_TYPE_dsns__DesktopInfoClass,
  SOAP_TYPE_dsns__ArrayOfDesktopInfoClass,
  SOAP_TYPE_dsns__CompleteDesktopResponse,
  SOAP_TYPE_dsns__GetMapResponse,
  SOAP_TYPE_dsns__MapActionResponse,
  SOAP_TYPE_dsns__DesktopVersioningClass,
  SOAP_TYPE_SOAP_ENV__Header,
  SOAP_TYPE_SOAP_ENV__Code,
  SOAP_TYPE_SOAP_ENV__Reason,
  SOAP_TYPE_SOAP_ENV__Detail,
  SOAP_TYPE_SOAP_ENV__Fault,
#define TARNWELL_OPERATION(Name, Wire, Shape, Result) SOAP_TYPE__dsns__##Name, SOAP_TYPE__dsns__##Name##Response,
#include "protocol/Operations.inc"
#undef TARNWELL_OPERATION
  SOAP_TYPE_count
};
