// Answers to HTTP requests: SOAP envelopes, faults, and the service's description. A context belongs to one thread at a
// time. A client that has closed the connection gets no answer, which is no error.
#pragma once

#include "protocol/soap/Runtime.h"

#include <functional>
#include <string>

namespace localservice {

/// Sends an envelope with HTTP status `status`; `writeContent` writes what is in the body. It returns 0 or the
/// runtime's code, and is called twice: to count and to send.
void sendEnvelope(struct soap* soap, int status, const std::function<int()>& writeContent);

/// Sends the fault that the context's error calls for, unless a fault is already there. Returns the HTTP status:
/// `status`, or where that is 0, the one that SOAP 1.2 Part 2 section 7.5.2.2 has for the fault. `soapVersion` is 1
/// or 2.
int sendFault(struct soap* soap, int status, short soapVersion);

/// Sends a whole XML document. Returns 0 or the runtime's code.
int sendDocument(struct soap* soap, const std::string& xml);

} // namespace localservice
