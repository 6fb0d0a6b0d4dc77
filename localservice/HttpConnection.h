// One HTTP request on one connection: the callbacks with which the runtime reads it and writes the response. Limits the
// time for the head, the rate of content and response, and the length of the request. One thread.
#pragma once

#include "localservice/MarkupLimit.h"
#include "localservice/MemoryBudget.h"
#include "localservice/MinimumRate.h"
#include "localservice/Refusal.h"
#include "localservice/Trace.h"
#include "protocol/runtime/Chunks.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace localservice {

class HttpConnection;

/// What all connections of a service have in common.
struct HttpService {
  std::string url;              ///< of the service, by the address that it listens at
  std::uint64_t longestContent; ///< of a request, bytes
  /// Looks at the head of a POST request before anything else is done with it. Null: go on.
  const Refusal* (*checkHead)(const HttpConnection& connection, const struct soap* soap);
};

/// The connection of a runtime context.
class HttpConnection {
public:
  /// Installs the callbacks in `context`, which has the connection's socket and outlives this object, as the other
  /// arguments do. A large content waits for `memory`. `trace` gets everything that is received and sent, or is null.
  HttpConnection(struct soap* context, const HttpService& httpService, Reservation& memory, TracedExchange* trace);
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  const HttpService& service;

  static HttpConnection& of(struct soap* context) { return *static_cast<HttpConnection*>(context->user); }

  /// The value of the header field `name`, in lower case; empty when there is none. Values of several fields of this
  /// name are joined by ", ".
  std::string field(const std::string& name) const;
  /// Sends "100 Continue" to a client that waits for it before it sends the content ("Expect: 100-continue").
  void sendContinue();
  /// Reads what follows the envelope. Returns 0, or the runtime's code when the content is shorter than its length or
  /// has no last chunk.
  int readToEnd();
  /// Refuses the request, unless that was done before. Returns the HTTP status, which is an error for the runtime.
  int refuse(const Refusal& refusal);
  /// Why the request was refused; null: it was not.
  const Refusal* refusal() const { return refusedFor; }

  /// Ends the sending side, and reads what the client still sends, for 30 s at most: closing a socket with unread bytes
  /// would reset the connection, and the client might lose the response.
  void linger();

  std::uint64_t received = 0; ///< bytes
  std::uint64_t sent = 0;     ///< bytes

private:
  int parseHead();
  const Refusal* readFraming();
  std::size_t receive(char* to, std::size_t room);
  int checkContent(const char* piece, std::size_t size);
  int send(const char* bytes, std::size_t size);
  int transmit(std::string_view left);

  struct soap* const soap;
  int (*const parseAsRuntime)(struct soap*);
  Reservation& reservation;
  TracedExchange* const traced;
  std::map<std::string, std::string> fields; ///< by name in lower case
  MinimumRate rate;
  std::uint64_t toReceive;   ///< bytes that may still be received, of the head or of the content
  std::uint64_t content = 0; ///< bytes, without the framing of chunks
  bool isInContent = false;
  bool isChunked = false;
  bool isReserved = false; ///< memory for the longest content in chunks
  bool isResponding = false;
  bool isHeadOnly = false; ///< the response to HEAD ends with its head
  const Refusal* refusedFor = nullptr;
  MarkupLimit markup;
  std::optional<tarnwell::Chunks> chunks; ///< wraps the callbacks
};

} // namespace localservice
