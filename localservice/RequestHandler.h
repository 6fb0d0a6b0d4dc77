// What happens on one connection: a SOAP 1.2 request over HTTP is read and answered; everything else is answered with a
// fault. Used by the threads of the server, all at once.
#pragma once

#include "localservice/HttpConnection.h"
#include "localservice/Options.h"
#include "localservice/RequestLog.h"

#include <string>

namespace localservice {

/// Path of the service; requests for others get status 404.
inline constexpr const char* servicePath = "/service/desktopservice.asmx";

class RequestHandler {
public:
  /// `serviceUrl` is for descriptions that are asked for without a Host field. `handled` outlives this object.
  RequestHandler(const Options& handled, std::string serviceUrl);

  /// Serves the request on the context's socket and waits, for a limited time, until the client has taken the answer.
  /// The context and its socket stay open and the caller's. Throws nothing.
  void handle(struct soap* context) const noexcept;

private:
  void exchange(HttpConnection& connection, struct soap* soap, LogEntry& entry) const;

  const Options& options;
  const std::string url;
};

} // namespace localservice
