#include "localservice/Session.h"

#include "localservice/Description.h"
#include "localservice/Handlers.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>

namespace localservice {

namespace {

using tarnwell::OperationIndex;

constexpr int stallSeconds = 10;
constexpr int transferSeconds = 120;
constexpr int lingerStallMilliseconds = 2000;
constexpr std::chrono::seconds lingerLimit{30};

/// The request's target without scheme and authority, which clients that take the service for a proxy send.
std::string_view targetOf(const struct soap* soap) {
  std::string_view target = soap->path;
  const std::size_t scheme = target.find("://");
  if (target.empty() || target.front() == '/' || scheme == std::string_view::npos)
    return target;
  const std::size_t path = target.find('/', scheme + 3);
  return path == std::string_view::npos ? "/" : target.substr(path);
}

bool isForService(const struct soap* soap) {
  const std::string_view target = targetOf(soap);
  return target.substr(0, target.find('?')) == servicePath;
}

bool asksForDescription(const struct soap* soap) {
  const std::string_view target = targetOf(soap);
  const std::size_t query = target.find('?');
  return query != std::string_view::npos && soap_tag_cmp(target.data() + query + 1, "wsdl") == 0;
}

/// The runtime's call-back for methods that the service does not have.
int refuseMethod(struct soap* soap) { return isForService(soap) ? 405 : 404; }

/// The runtime's call-back for GET.
int sendDescription(struct soap* soap) {
  if (!isForService(soap) || !asksForDescription(soap))
    return refuseMethod(soap);
  const std::string text = serviceDescription(*static_cast<const std::string*>(soap->user));
  soap->http_content = "text/xml; charset=utf-8";
  if (soap_response(soap, SOAP_FILE) || soap_send_raw(soap, text.data(), text.size()))
    return soap->error;
  return soap_end_send(soap);
}

/// Reads up to the first element in the body. Knows one version of SOAP, and says so to the others.
int receiveEnvelope(struct soap* soap) {
  soap->version = 2;
  if (soap_element_begin_in(soap, "SOAP-ENV:Envelope", 0, nullptr)) {
    if (soap->error == SOAP_TAG_MISMATCH && std::strcmp(tarnwell::localPart(soap->tag), "Envelope") == 0)
      soap->error = SOAP_VERSIONMISMATCH;
    return soap->error;
  }
  return soap_recv_header(soap) || soap_body_begin_in(soap) || soap_peek_element(soap) ? soap->error : SOAP_OK;
}

/// Reads the request that a message is about. Returns 0 or the runtime's code, SOAP_STOP when a call-back has answered.
int receive(struct soap* soap, OperationIndex& index, const void*& request) {
  if (soap_begin_recv(soap))
    return soap->error;
  if (soap->status != SOAP_POST) // neither this nor any other method
    return soap->error = 400;
  if (!isForService(soap))
    return soap->error = 404;
  if (receiveEnvelope(soap))
    return soap->error;
  const auto* const operation = std::find_if(
      std::begin(tarnwell::operations), std::end(tarnwell::operations),
      [soap](const tarnwell::Operation& known) { return !soap_match_tag(soap, soap->tag, known.requestElement); });
  if (operation == std::end(tarnwell::operations))
    return soap->error = SOAP_NO_METHOD;
  index = static_cast<OperationIndex>(operation - std::begin(tarnwell::operations));
  request = tarnwell::readIndependent(soap, operation->requestElement, nullptr, nullptr,
                                      tarnwell::typeOf(operation->request));
  if (!request || soap_body_end_in(soap) || soap_envelope_end_in(soap) || soap_end_recv(soap))
    return soap->error;
  return SOAP_OK;
}

/// Sends an envelope with HTTP status `status`; `writeContent` writes what is in the body, and is called twice: to
/// count and to send. A client that is gone is nobody's concern.
template <class Write> void sendEnvelope(struct soap* soap, int status, Write writeContent) {
  const auto write = [&] {
    return soap_envelope_begin_out(soap) || soap_body_begin_out(soap) || writeContent() || soap_body_end_out(soap) ||
           soap_envelope_end_out(soap);
  };
  soap->encodingStyle = nullptr; // document/literal
  soap->action = nullptr;        // else the runtime would echo the request's
  const bool counted = !soap_begin_count(soap) && !(soap->mode & SOAP_IO_LENGTH && write()) && !soap_end_count(soap);
  if (counted && !soap_response(soap, status) && !write())
    static_cast<void>(soap_end_send(soap));
}

/// HTTP status of a fault (SOAP 1.2 Part 2 section 7.5.2.2): 400 for the sender's, 500 for others, or what HTTP itself
/// has for the case.
int statusOf(const struct soap* soap, const char* faultCode) {
  if (soap->error >= 400 && soap->error < 600)
    return soap->error;
  if (soap->error == SOAP_HDR)
    return 431;
  if (soap->error == SOAP_EOF) {
    char next;
    const bool ended = recv(soap->socket, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    return ended ? 400 : 408; // left off, or too slow
  }
  return std::strcmp(faultCode, "SOAP-ENV:Sender") == 0 ? 400 : 500;
}

/// Answers with the fault that the context's error calls for, unless one is already there.
void sendFault(struct soap* soap) {
  if (soap->version != 2) // what the runtime said before it knew of SOAP is no SOAP fault
    soap->fault = nullptr;
  soap->version = 2;
  const int error = soap->error;
  if (error == SOAP_EOM)
    soap_set_receiver_error(soap, nullptr, nullptr, error);
  soap_set_fault(soap); // fills what is not there: the code is Sender
  soap->error = error;
  const int status = statusOf(soap, *soap_faultcode(soap));
  if (status == 405)
    soap->http_extra_header = "Allow: GET, POST";
  const char** const text = soap_faultstring(soap);
  *text = soap_strdup(soap, *text); // out of the buffers that sending uses
  sendEnvelope(soap, status, [soap] { return soap_putfault(soap); });
}

/// Tells the client that nothing more comes, and takes what it still sends: closing a socket that has unread bytes
/// breaks off a client that is still sending, which then reads no answer.
void linger(int socket) {
  shutdown(socket, SHUT_WR);
  const auto end = std::chrono::steady_clock::now() + lingerLimit;
  char unread[1 << 16];
  pollfd waiting = {socket, POLLIN, 0};
  while (poll(&waiting, 1, lingerStallMilliseconds) > 0 && recv(socket, unread, sizeof unread, MSG_DONTWAIT) > 0)
    if (std::chrono::steady_clock::now() > end)
      return;
}

} // namespace

void Session::ContextDeleter::operator()(struct soap* soap) const {
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
}

Session::Session(const std::string& databaseFile, bool readOnly, std::string url)
    : store(databaseFile, readOnly), endpoint(std::move(url)), context(soap_new()) {
  if (!context)
    throw std::bad_alloc();
  context->user = const_cast<std::string*>(&endpoint);
  context->socket_flags = MSG_NOSIGNAL;
  context->recv_timeout = context->send_timeout = stallSeconds;
  context->transfer_timeout = transferSeconds;
  context->fget = sendDescription;
  context->fput = context->fpatch = context->fdel = context->fopt = context->fhead = refuseMethod;
}

void Session::serve(int socket) noexcept {
  struct soap* const soap = context.get();
  soap_begin(soap);
  soap->socket = socket;
  try {
    exchange();
  } catch (const std::exception& e) {
    soap->version = 2;
    soap->fault = nullptr;
    soap_receiver_fault(soap, e.what(), nullptr);
    sendFault(soap);
  }
  linger(socket);
  soap->socket = SOAP_INVALID_SOCKET;
  soap_destroy(soap);
  soap_end(soap);
}

void Session::exchange() {
  struct soap* const soap = context.get();
  OperationIndex index{};
  const void* request = nullptr;
  if (receive(soap, index, request)) {
    if (soap->error != SOAP_STOP)
      sendFault(soap);
    return;
  }
  const void* const response = answer(store, soap, index, request);
  const tarnwell::Operation& operation = tarnwell::operations[static_cast<std::size_t>(index)];
  sendEnvelope(soap, SOAP_OK, [&] {
    return tarnwell::writeElement(soap, operation.responseElement, -1, response, nullptr,
                                  tarnwell::typeOf(operation.response));
  });
}

} // namespace localservice
