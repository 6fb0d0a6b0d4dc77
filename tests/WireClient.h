// Exchanges without sockets: the answer is a text that arrives in pieces of a given size; sent bytes are kept. For
// tests that need thousands of exchanges or exact control over each received piece.
#pragma once

#include "client/DesktopServiceSoap12.h"
#include "tests/Http.h"
#include "tests/Messages.h"
#include "tests/Table.h"

#include <algorithm>

// Values as short texts, for table rows and failure messages.

/// " name=value"; nothing for a default. Texts stand in quotes, blocks as their size and bytes.
template <class Value> std::string shown(const char* name, const Value& value) {
  std::string text;
  if (value == Value())
    return text;
  if constexpr (std::is_same_v<Value, xsd__string*>)
    text = "'" + QString::fromStdWString(*value).toStdString() + "'";
  else if constexpr (std::is_same_v<Value, xsd__base64Binary*>)
    text = std::to_string(value->__size) + ":" + std::string(value->__ptr, value->__ptr + value->__size);
  else if constexpr (std::is_pointer_v<Value>)
    text = value;
  else
    text = QString::number(static_cast<double>(value), 'g', std::is_same_v<Value, float> ? 9 : 17).toStdString();
  return " " + std::string(name) + "=" + text;
}

inline std::string show(const dsns__DesktopInfoClass* map) {
  if (!map)
    return "null";
  const std::string text = shown("MapName", map->MapName) + shown("MapId", map->MapId) + shown("Author", map->Author) +
                           shown("LastModified", map->LastModified) + shown("Created", map->Created) +
                           shown("Description", map->Description) + shown("Thumbnail", map->Thumbnail) +
                           shown("IsPublished", map->IsPublished) + shown("MapContent", map->MapContent) +
                           shown("AllowInclusion", map->AllowInclusion) + shown("Version", map->Version) +
                           shown("Preview", map->Preview) + shown("OldTwlxBackUp", map->OldTwlxBackUp) +
                           shown("Format_IsTwlx", map->Format_IsTwlx) + shown("Format_Type", map->Format_Type) +
                           shown("Format_Version", map->Format_Version) + shown("Format_Header", map->Format_Header);
  return "{" + text.substr(text.empty() ? 0 : 1) + "}";
}
inline std::string show(const dsns__DesktopLoginResponseClass* login) {
  return login ? "login " + std::to_string(login->DesktopLoginValue) : "no login";
}
inline std::string show(int access, const dsns__DesktopLoginResponseClass* login, const dsns__DesktopInfoClass* map) {
  return std::to_string(access) + " " + show(login) + " " + show(map);
}
inline std::string show(const dsns__GetMapResponse* r) {
  return r ? show(r->DesktopMapAccess, r->DesktopLoginResponseObject, r->DesktopInfo) : "none";
}
inline std::string show(const dsns__MapActionResponse* r) {
  return r ? show(r->DesktopMapAccess, r->DesktopLoginResponseObject, r->DesktopInfoClass) : "none";
}
inline std::string show(const dsns__DesktopVersioningClass* result) {
  return result ? shown("Path", result->Path) + shown("Version", result->Version) : "none";
}
inline std::string show(const dsns__CompleteDesktopResponse* result) {
  if (!result || !result->DesktopInfoObjectList)
    return result ? show(result->DesktopLoginResponseObject) + " no list" : "none";
  std::string text = show(result->DesktopLoginResponseObject);
  for (const dsns__DesktopInfoClass* map : result->DesktopInfoObjectList->DesktopInfoClass)
    text += " " + show(map);
  return text + " end";
}

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

  /// Each gets `body` as its answer, or `reply` when there is no body.
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
