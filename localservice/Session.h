// One connection after another: reads a SOAP 1.2 request over HTTP, has it answered, and answers whatever else comes
// with a SOAP 1.2 fault. Each thread of the server has its own.
#pragma once

#include "localservice/Store.h"
#include "protocol/soap/Runtime.h"

#include <memory>
#include <string>

namespace localservice {

/// Path of the service; requests for others get status 404.
inline constexpr const char* servicePath = "/service/desktopservice.asmx";

class Session {
public:
  /// `url` is the service's own URL, for its description. Throws StoreError, std::bad_alloc.
  Session(const std::string& databaseFile, bool readOnly, std::string url);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Serves one request and waits, for a limited time, until the client has taken the answer. A client that stalls for
  /// more than some seconds, or takes minutes in all, is given up. The socket stays open and the caller's. Throws
  /// nothing.
  void serve(int socket) noexcept;

private:
  void exchange();

  struct ContextDeleter {
    void operator()(struct soap* context) const;
  };

  Store store;
  const std::string endpoint;
  std::unique_ptr<struct soap, ContextDeleter> context;
};

} // namespace localservice
