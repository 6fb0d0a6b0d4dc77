// One HTTP request on one connection: the call-backs with which the runtime reads it and writes the answer. Limits the
// time for the head, the rate of content and answer, and the length of the request. One thread.
#pragma once

#include "localservice/MarkupLimit.h"
#include "localservice/MinimumRate.h"
#include "protocol/runtime/Runtime.h"

#include <cstdint>
#include <map>
#include <string>

namespace localservice {

/// The connection of a runtime context.
class HttpConnection {
public:
  /// Installs the call-backs in `context`, which has the connection's socket and outlives this object. `longestContent`
  /// in bytes.
  HttpConnection(struct soap* context, std::uint64_t longestContent);
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  static HttpConnection& of(struct soap* context) { return *static_cast<HttpConnection*>(context->user); }

  /// The value of the header field `name`, in lower case; empty when there is none. Values of several fields of this
  /// name are joined by ", ".
  std::string field(const std::string& name) const;
  /// Sends "100 Continue" to a client that waits for it before it sends the content ("Expect: 100-continue").
  void sendContinue();
  /// Reads what follows the envelope. Returns 0, or the runtime's code when the content is shorter than its length or
  /// has no last chunk.
  int readToEnd();
  /// The HTTP status with which the request was refused while it was read; 0: it was not refused.
  int refusal() const { return refusedWith; }

  /// Ends the sending side, and reads what the client still sends, for 30 s at most: closing a socket with unread bytes
  /// would reset the connection, and the client might lose the answer.
  void linger();

  std::uint64_t received = 0; ///< bytes
  std::uint64_t sent = 0;     ///< bytes

private:
  int parseHead();
  int readFraming();
  std::size_t receive(char* to, std::size_t room);
  int checkContent(const char* piece, std::size_t size);
  int send(const char* bytes, std::size_t size);
  int refuse(int status) { return refusedWith = status; }

  struct soap* const soap;
  int (*const parseAsRuntime)(struct soap*);
  const std::uint64_t longestContent;
  std::map<std::string, std::string> fields; ///< by name in lower case
  MinimumRate rate;
  std::uint64_t toReceive;   ///< bytes that may still be received, of the head or of the content
  std::uint64_t content = 0; ///< bytes, without the framing of chunks
  bool isInContent = false;
  bool isChunked = false;
  bool hasLastChunk = false;
  bool isAnswering = false;
  bool isHeadOnly = false; ///< the answer to HEAD ends with its head
  int refusedWith = 0;
  MarkupLimit markup;
};

} // namespace localservice
