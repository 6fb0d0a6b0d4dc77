// Exchanges without sockets: what arrives is a text in pieces of a given size, what is sent is kept. For tests that
// need thousands of exchanges or exact control of what arrives at once.
#pragma once

#include "client/DesktopServiceSoap12.h"
#include "tests/Http.h"
#include "tests/Messages.h"
#include "tests/Show.h"
#include "tests/Table.h"

#include <algorithm>

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

  /// Each asks with an empty request, answered with `body`, or if there is none with `reply`. What was read, or "error"
  /// and the code.
  std::string login(const std::string& body = {}, int status = 200) {
    return ask(&WireClient::__dsns4__Login, &_dsns__LoginResponse::LoginResult, body, status);
  }
  std::string content(const std::string& body = {}) {
    return ask(&WireClient::__dsns4__GetMapContent_USCORENEW_USCOREDESKTOP,
               &_dsns__GetMapContent_USCORENEW_USCOREDESKTOPResponse::GetMapContent_USCORENEW_USCOREDESKTOPResult,
               body);
  }
  std::string list(const std::string& body = {}) {
    return ask(&WireClient::__dsns4__GetMapsList_USCORENEW_USCOREDESKTOP,
               &_dsns__GetMapsList_USCORENEW_USCOREDESKTOPResponse::GetMapsList_USCORENEW_USCOREDESKTOPResult, body);
  }

private:
  template <class Ask, class Answer, class Result>
  std::string ask(int (DesktopServiceSoap12::*operation)(Ask*, Answer*), Result* Answer::*result,
                  const std::string& body, int status = 200) {
    if (!body.empty())
      reply = ::reply(status, body).bytes;
    Ask request;
    Answer answer;
    const int code = (this->*operation)(&request, &answer);
    return code ? "error " + std::to_string(code) : show(answer.*result);
  }
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
