// The proxy of the service's SOAP 1.2 binding. It owns the runtime context; one thread at a time.
#pragma once

#include "protocol/desktopservice.h"

/// Virtual destructor first, then one virtual operation per operation of the service, in the slot order of
/// Operations.inc.
class DesktopServiceSoap12 {
public:
  /// The context: no mode flags, the namespace table of this binding, no standard streams, no SIGPIPE. Owned; null
  /// when it could not be made.
  struct soap* soap;
  /// URL used by every call. Not owned.
  const char* soap_endpoint;

  /// Makes the context. The endpoint is the test deployment's, so that a program that sets none touches no real map.
  DesktopServiceSoap12();
  DesktopServiceSoap12(const DesktopServiceSoap12&) = delete;
  DesktopServiceSoap12& operator=(const DesktopServiceSoap12&) = delete;
  /// Deletes every object that the context manages, then the context.
  virtual ~DesktopServiceSoap12();

#define TARNWELL_OPERATION(Name, Wire, Shape, Result)                                                                  \
  /* Returns the stub's code, or 20 without a context. */                                                              \
  virtual int __dsns4__##Name(_dsns__##Name* request, _dsns__##Name##Response* response) {                             \
    return soap ? soap_call___dsns4__##Name(soap, soap_endpoint, nullptr, request, response) : SOAP_EOM;               \
  }
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};
