// One HTTP request on one connection: the call-backs by which the runtime reads it and writes the answer. Bounds what a
// client can cost: the time for the head, the rate of content and answer, the length of the request. One thread.
#pragma once

#include "localservice/MarkupLimit.h"
#include "localservice/Pace.h"
#include "protocol/soap/Runtime.h"

#include <cstdint>
#include <map>
#include <string>

namespace localservice {

class HttpConnection {
public:
  /// Takes over reading and writing of `context`, which has the connection's socket and outlives this object.
  /// `longestContent` in bytes.
  HttpConnection(struct soap* context, std::uint64_t longestContent);
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  static HttpConnection& of(struct soap* context) { return *static_cast<HttpConnection*>(context->user); }

  /// The value of a header field, its name in lower case; empty when there is none.
  std::string field(const std::string& name) const;
  /// Tells a client that waits for it before it sends the content ("Expect: 100-continue") to go on.
  void inviteContent();
  /// Reads what follows the envelope. Returns 0, or the runtime's code when the content does not end as its length or
  /// its last chunk says.
  int readToEnd();
  /// The HTTP status by which the request was refused while it was read; 0: it was not.
  int refusal() const { return refusedWith; }

  /// Tells the client that nothing more comes, and reads what it still sends, for a limited time: closing a socket that
  /// has unread bytes resets the connection, and the client may lose the answer.
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
  Pace pace;
  std::uint64_t toReceive;   ///< bytes that may still be received, by head limit, length or limit
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
