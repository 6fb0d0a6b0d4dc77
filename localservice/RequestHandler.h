// Serves one connection: reads a SOAP 1.2 request over HTTP and sends the response; everything else gets a fault. All
// threads of the server use one object at the same time.
#pragma once

#include "localservice/HttpConnection.h"
#include "localservice/MemoryBudget.h"
#include "localservice/Options.h"
#include "localservice/RequestLog.h"
#include "localservice/StorePool.h"
#include "localservice/Trace.h"

#include <chrono>
#include <optional>
#include <string>

namespace localservice {

/// Path of the service. Requests for another path get status 404.
inline constexpr const char* servicePath = "/service/desktopservice.asmx";

/// Serves requests as the options say.
class RequestHandler {
public:
  /// `serverOptions` and `file` outlive this object. Throws std::runtime_error when the folder of traces cannot be
  /// used.
  RequestHandler(const Options& serverOptions, const DatabaseFile& file, const std::string& url);

  /// Serves the request on the context's socket and waits at most 30 s until the client has read the response. The
  /// context and its socket stay open and belong to the caller. Throws nothing.
  void handle(struct soap* context) noexcept;

private:
  void exchange(HttpConnection& connection, struct soap* soap, Reservation& reservation, LogEntry& entry);

  const Options& options;
  const HttpService service;
  StorePool stores;
  MemoryBudget memory;
  std::optional<Trace> trace;
  const std::chrono::milliseconds delay;
  const bool logs;
};

} // namespace localservice
