// The numbers of the schema's types, which follow those of the built-in types and of the envelope.
#pragma once

#include "protocol/schema/Envelope.h"

enum {
  SOAP_TYPE_dsns2__guid = SOAP_TYPE_afterEnvelope,
  SOAP_TYPE_dsns__DesktopLoginEnumerators,
  SOAP_TYPE_dsns__DesktopMapAccess,
  SOAP_TYPE_dsns__DesktopLoginResponseClass,
  SOAP_TYPE_dsns__DesktopInfoClass,
  SOAP_TYPE_dsns__ArrayOfDesktopInfoClass,
  SOAP_TYPE_dsns__CompleteDesktopResponse,
  SOAP_TYPE_dsns__GetMapResponse,
  SOAP_TYPE_dsns__MapActionResponse,
  SOAP_TYPE_dsns__DesktopVersioningClass,
#define TARNWELL_OPERATION(Name, Wire, Shape, Result) SOAP_TYPE__dsns__##Name, SOAP_TYPE__dsns__##Name##Response,
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
  SOAP_TYPE_count
};
