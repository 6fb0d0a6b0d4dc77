#include "client/DesktopServiceSoap12.h"

#include "Deployment.h"
#include "protocol/runtime/RuntimeInternals.h"

DesktopServiceSoap12::DesktopServiceSoap12() : soap(soap_new2(0, 0)), soap_endpoint(TARNWELL_TEST_ENDPOINT) {
  if (!soap)
    return;
  if (!soap->namespaces)
    soap->namespaces = tarnwell::namespaceTable;
  tarnwell::setUpClient(soap);
}

DesktopServiceSoap12::~DesktopServiceSoap12() {
  if (!soap)
    return;
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
}
