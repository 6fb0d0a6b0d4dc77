// Sends answers to HTTP requests: SOAP envelopes, faults and documents. A client that has closed the connection gets no
// answer, and that is no error. A context belongs to one thread at a time.
#pragma once

#include "protocol/runtime/Runtime.h"

#include <functional>
#include <string>

namespace localservice {

/// Sends an envelope with HTTP status `status`. `writeContent` writes the content of the body and returns 0 or the
/// runtime's code; it is called twice, to count and to send.
void sendEnvelope(struct soap* soap, int status, const std::function<int()>& writeContent);

/// Sends the context's fault or, when it has none, the fault for its error. `soapVersion`: 1 or 2. Returns the HTTP
/// status: `status` or, when that is 0, the status of the fault (SOAP 1.2 Part 2 section 7.5.2.2).
int sendFault(struct soap* soap, int status, short soapVersion);

/// Sends a whole XML document. Returns 0 or the runtime's code.
int sendDocument(struct soap* soap, const std::string& xml);

} // namespace localservice
