// Exchanges without sockets: what arrives is a text in pieces of a given size, what is sent is kept. For tests that
// need thousands of exchanges or exact control of what arrives at once.
#pragma once

#include "client/DesktopServiceSoap12.h"
#include "tests/Http.h"
#include "tests/Messages.h"
#include "tests/Show.h"
#include "tests/Table.h"

#include <algorithm>
#include <iterator>

enum Route { Soap12Stub, OtherStub, Proxy };

/// Sends an empty request by `route`: what was read of the answer, or "error" and the code.
template <class Ask, class Answer, auto soap12Stub, auto otherStub, auto operation, auto result>
std::string askBy(DesktopServiceSoap12& client, Route route) {
  Ask request;
  Answer answer;
  const auto stub = route == Soap12Stub ? soap12Stub : otherStub;
  const int code = route == Proxy ? (client.*operation)(&request, &answer)
                                  : stub(client.soap, client.soap_endpoint, nullptr, &request, &answer);
  return code ? "error " + std::to_string(code) : show(answer.*result);
}

/// All operations, in the order of tarnwell::operations.
const struct ClientOperation {
  std::string name;
  std::string (*ask)(DesktopServiceSoap12&, Route);
} clientOperations[] = {
#define TARNWELL_OPERATION(Name, Wire, Shape, ResultClass)                                                             \
  {Wire, &askBy<_dsns__##Name, _dsns__##Name##Response, &soap_call___dsns4__##Name, &soap_call___dsns3__##Name,        \
                &DesktopServiceSoap12::__dsns4__##Name, &_dsns__##Name##Response::Name##Result>},
#include "protocol/schema/Operations.inc"
#undef TARNWELL_OPERATION
};

/// A context's connections without sockets.
struct Wire {
  std::string reply;     ///< all that arrives, HTTP header included
  std::size_t piece = 0; ///< bytes per receive; 0: as many as fit
  std::string sent;      ///< by the last exchange

  explicit Wire(struct soap* soap) {
    soap->user = this;
    soap->fopen = [](struct soap* context, const char*, const char*, int) {
      of(context).rewind();
      return SOAP_SOCKET{1 << 20};
    };
    soap->fclose = [](struct soap* context) {
      context->socket = SOAP_INVALID_SOCKET;
      return SOAP_OK;
    };
    soap->fsend = [](struct soap* context, const char* bytes, std::size_t size) {
      of(context).sent.append(bytes, size);
      return SOAP_OK;
    };
    soap->frecv = [](struct soap* context, char* to, std::size_t size) {
      Wire& self = of(context);
      const std::size_t most = self.piece == 0 ? size : std::min(self.piece, size);
      const std::size_t count = self.reply.copy(to, most, self.m_position);
      self.m_position += count;
      return count;
    };
  }
  /// What a new connection does.
  void rewind() { sent.clear(), m_position = 0; }
  Request request() const { return Request::parsed(sent); }

private:
  static Wire& of(struct soap* soap) { return *static_cast<Wire*>(soap->user); }
  std::size_t m_position = 0;
};

/// The proxy object on such connections.
class WireClient : public DesktopServiceSoap12, public Wire {
public:
  WireClient() : Wire(soap) { soap_endpoint = "http://service.example/service/desktopservice.asmx"; }

  /// What `write(context)` sends outside an exchange, or "error" and the code.
  template <class Write> std::string written(Write write) {
    rewind();
    const bool isFailed = soap_begin_send(soap) || write(soap) || soap_end_send(soap);
    return isFailed ? "error " + std::to_string(soap->error) : sent;
  }

  /// Each is answered with `body`, or if there is none with `reply`.
  std::string ask(const std::string& name, const std::string& body = {}, int status = 200) {
    if (!body.empty())
      reply = ::reply(status, body).bytes;
    return std::find_if(std::begin(clientOperations), std::end(clientOperations),
                        [&name](const auto& row) { return row.name == name; })
        ->ask(*this, Proxy);
  }
  std::string login(const std::string& body = {}, int status = 200) { return ask("Login", body, status); }
  std::string content(const std::string& body = {}) { return ask("GetMapContent_NEW_DESKTOP", body); }
  std::string list(const std::string& body = {}) { return ask("GetMapsList_NEW_DESKTOP", body); }
};

/// Calls `check(client, row)` for every row of a table: what the client reads arrives whole, byte by byte, and in
/// pieces.
template <class Check> void forEachArrival(const char* table, Check check) {
  for (const auto& row : rows(table))
    for (const std::size_t piece : {0U, 1U, 5U}) {
      WireClient client;
      client.piece = piece;
      check(client, row);
    }
}
