#include "protocol/soap/Exchange.h"

#include "Deployment.h"
#include "protocol/binding/Text.h"
#include "protocol/runtime/Chunks.h"
#include "protocol/runtime/RuntimeInternals.h"
#include "protocol/schema/Envelope.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <strings.h>
#include <utility>

namespace tarnwell {
namespace {

/// However an exchange ends, closes the socket and puts back what it changed in the context, whose error stays:
/// - the mode, which a request with attachments sets;
/// - the functions that receive, which a chunked answer replaces;
/// - proxy credentials, which are taken out when they are too long for the runtime's buffer;
/// - the header of an earlier answer: from then on every request carries an empty one until the context's objects are
///   released, but the runtime forgets it with the next answer that has none.
class ExchangeScope {
public:
  explicit ExchangeScope(struct soap* soap)
      : m_soap(soap), m_mode(soap->omode), m_user(soap->proxy_userid), m_password(soap->proxy_passwd),
        m_header(soap->header) {
    if (m_user && m_password && std::strlen(m_user) + std::strlen(m_password) > longestCredentials)
      soap->proxy_userid = soap->proxy_passwd = nullptr;
  }
  ExchangeScope(const ExchangeScope&) = delete;
  ExchangeScope& operator=(const ExchangeScope&) = delete;
  ~ExchangeScope() {
    m_soap->omode = m_mode;
    m_soap->proxy_userid = m_user;
    m_soap->proxy_passwd = m_password;
    if (!m_soap->header)
      m_soap->header = m_header;
    soap_closesock(m_soap);
  }

private:
  /// Characters of user and password together.
  static constexpr std::size_t longestCredentials = 760;

  struct soap* m_soap;
  soap_mode m_mode;
  const char* m_user;
  const char* m_password;
  SOAP_ENV__Header* m_header;
  Chunks m_chunks{m_soap};
};

/// Emits the message; run twice, once to count it and once to send it.
int writeMessage(struct soap* soap, const SchemaObject* request) {
  if (beginEnvelope(soap) || soap_putheader(soap) || soap_body_begin_out(soap))
    return soap->error;
  if (request && request->soap_put(soap, nullptr, ""))
    return soap->error;
  return soap_body_end_out(soap) || soap_envelope_end_out(soap) ? soap->error : SOAP_OK;
}

int send(struct soap* soap, const char* endpoint, const char* action, const SchemaObject* request) {
  beginMessage(soap);
  soap->encodingStyle = nullptr; // document/literal
  soap_serializeheader(soap);
  if (request)
    request->soap_serialize(soap);
  if (soap_begin_count(soap))
    return soap->error;
  if (soap->mode & SOAP_IO_LENGTH && writeMessage(soap, request))
    return soap->error;
  if (soap_end_count(soap) || soap_connect(soap, endpoint, action) || writeMessage(soap, request))
    return soap->error;
  return soap_end_send(soap);
}

/// The result of a call whose answer is a fault, by the code of SOAP 1.2 Part 1 section 5.4.6 or its SOAP 1.1 name. The
/// codes have the prefix of the namespace table, whatever the answer's own was.
int faultResult(const char* code) {
  static constexpr struct {
    const char* code;
    int result;
  } results[] = {
      {"SOAP-ENV:Server", SOAP_SVR_FAULT},
      {"SOAP-ENV:Receiver", SOAP_SVR_FAULT},
      {"SOAP-ENV:Client", SOAP_CLI_FAULT},
      {"SOAP-ENV:Sender", SOAP_CLI_FAULT},
      {"SOAP-ENV:MustUnderstand", SOAP_MUSTUNDERSTAND},
      {"SOAP-ENV:VersionMismatch", SOAP_VERSIONMISMATCH},
  };
  for (const auto& known : results)
    if (code && std::strcmp(code, known.code) == 0)
      return known.result;
  return SOAP_FAULT;
}

/// Reads the rest of the answer, behind the element in its body.
int endEnvelope(struct soap* soap) {
  if (soap->part != SOAP_NO_BODY && endElement(soap, "SOAP-ENV:Body"))
    return soap->error;
  return endElement(soap, "SOAP-ENV:Envelope") || endReceive(soap) ? soap->error : SOAP_OK;
}

/// Called when the response element could not be read. Reads a fault in its place, if that is what failed.
int receiveFault(struct soap* soap) {
  const int first = soap->error;
  // Only an empty body, or another element directly in it, can be a fault.
  if (first != SOAP_NO_TAG && (first != SOAP_TAG_MISMATCH || soap->level != 2))
    return first;
  soap->error = SOAP_OK;
  if (soap_getfault(soap)) {
    *soap_faultcode(soap) = soap->version == 2 ? "SOAP-ENV:Sender" : "SOAP-ENV:Client";
    return soap->error = first;
  }
  const int result = faultResult(faultCode(soap));
  static_cast<void>(endEnvelope(soap)); // the fault is complete: what follows it changes nothing any more
  return soap->error = result;
}

/// Reads the XML declaration, if there is one, and sets how bytes are read. The runtime would go by the first letters
/// of an encoding's name, and take what it does not know for UTF-8: here it fails, so that no text is misread.
int readDeclaration(struct soap* soap) {
  soap_wchar c = soap_getchar(soap);
  if (c == 0xEF && soap_get0(soap) == 0xBB) { // UTF-8's byte order mark
    soap_get1(soap);
    c = soap_get1(soap) == 0xBF ? soap_getchar(soap) : 0;
  }
  while (isBlank(static_cast<int>(c)))
    c = soap_getchar(soap);
  const soap_wchar next = c == '<' ? soap_get0(soap) : 0;
  if (static_cast<int>(next) == EOF) // the runtime would read on in what is left in its buffer
    return soap->error = SOAP_EOF;
  if (next != '?') {
    soap_unget(soap, c);
    return SOAP_OK;
  }
  std::string declaration;
  while ((c = soap_get1(soap)) != '>') {
    if (static_cast<int>(c) == EOF || declaration.size() == SOAP_TAGLEN)
      return soap->error = SOAP_EOF;
    declaration.push_back(static_cast<char>(c));
  }
  const std::size_t start = declaration.find("encoding");
  if (start == std::string::npos)
    return SOAP_OK;
  const std::string encoding = declaration.substr(declaration.find_first_of("\"'", start) + 1); // behind the quote
  const auto is = [&encoding](std::string_view known) {
    const char after = encoding.size() > known.size() ? encoding[known.size()] : '\0';
    return strncasecmp(encoding.c_str(), known.data(), known.size()) == 0 && (after == '"' || after == '\'');
  };
  if (is("ISO-8859-1"))
    soap->mode |= SOAP_ENC_LATIN;
  else if (!is("UTF-8") && !is("US-ASCII"))
    return soap->error = SOAP_UTF_ERROR;
  return SOAP_OK;
}

/// soap_envelope_begin_in, which replaces every error by the HTTP status, also by one of success. Here only the status
/// of a failure replaces an error.
int receiveEnvelope(struct soap* soap) {
  const int status = std::exchange(soap->status, 0);
  const int error = peekElement(soap) ? soap->error : soap_envelope_begin_in(soap);
  soap->status = status;
  return soap->error = error && status >= 400 ? status : error;
}

constexpr bool isPort(int port) { return port >= 1 && port <= 65535; }

/// Whether `address`, "host" or "host:port", has a host and a port that is none or a number of those. An IPv6 address
/// is in brackets.
bool isAddress(std::string_view address) {
  const std::size_t colon = address.find(':', address.starts_with("[") ? address.find(']') : 0);
  if (colon == address.npos)
    return !address.empty();
  const char* const end = address.data() + address.size();
  int port = 0;
  return colon > 0 && std::from_chars(address.data() + colon + 1, end, port).ptr == end && isPort(port);
}

/// Whether the runtime may be given these settings. With another scheme it waits for ever, or sends the envelope, with
/// the password, to a socket without HTTP; a control character ends the request's first line, a blank begins another
/// endpoint; it takes a port modulo 65536; and it takes what is before any "@" for user and password.
bool canConnect(const struct soap* soap, const char* endpoint) {
  constexpr char scheme[] = "http://";
  constexpr std::size_t schemeSize = sizeof scheme - 1;
  const auto isForbidden = [](unsigned char c) { return c <= ' ' || c == 0x7f; };
  if (strncasecmp(endpoint, scheme, schemeSize) != 0)
    return false;
  const std::string_view rest = endpoint + schemeSize, authority = rest.substr(0, rest.find_first_of("/?#"));
  return isAddress(authority.substr(authority.rfind('@') + 1)) && rest.find('@', authority.size()) == rest.npos &&
         std::none_of(rest.begin(), rest.end(), isForbidden) && (!soap->proxy_host || isPort(soap->proxy_port));
}

} // namespace

int exchange(struct soap* soap, const char* endpoint, const char* action, OperationIndex index,
             const SchemaObject* request, SchemaObject* response) {
  const Operation& operation = operations[static_cast<std::size_t>(index)];
  endpoint = endpoint ? endpoint : TARNWELL_TEST_ENDPOINT;
  if (!canConnect(soap, endpoint))
    return soap->error = SOAP_TCP_ERROR;
  const ExchangeScope scope(soap);
  if (send(soap, endpoint, action ? action : operation.action, request))
    return soap->error;
  if (!response)
    return soap->error;
  response->soap_default(soap);
  if (soap_begin_recv(soap)) // of an empty answer, the runtime returns the HTTP status
    return soap->error = soap->error / 100 == 2 ? SOAP_EOF : soap->error;
  if (readDeclaration(soap) || receiveEnvelope(soap))
    return soap->error;
  if (soap->version == 0) // the runtime takes any XML for an answer, too
    return soap->error = SOAP_TAG_MISMATCH;
  if (soap_recv_header(soap) || peekElement(soap) == SOAP_OCCURS || soap_body_begin_in(soap))
    return soap->error;
  if (!response->soap_get(soap, typeOf(operation.response).name, nullptr))
    return receiveFault(soap);
  return endEnvelope(soap) ? soap->error : soap->error = SOAP_OK;
}

} // namespace tarnwell
