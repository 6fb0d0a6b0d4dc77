#include "localservice/RequestHandler.h"

#include "localservice/Description.h"
#include "localservice/Handlers.h"
#include "localservice/PasswordHash.h"
#include "localservice/Reply.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <thread>

namespace localservice {

namespace {

using tarnwell::OperationIndex;

constexpr const char* soap11Namespace = "http://schemas.xmlsoap.org/soap/envelope/";

/// The request's target without scheme and authority, which a client sends that takes the service for a proxy.
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

/// The runtime's call-back for methods that the service does not support.
int refuseMethod(struct soap* soap) { return isForService(soap) ? 405 : 404; }

/// The runtime's call-back for GET and HEAD. The description contains the address that the client has used.
int sendDescription(struct soap* soap) {
  if (!isForService(soap) || !asksForDescription(soap))
    return refuseMethod(soap);
  const std::string host = HttpConnection::of(soap).field("host");
  return sendDocument(soap, serviceDescription(host.empty() ? std::string() : "http://" + host + servicePath));
}

/// Checks a request before its content is read. Returns 0 or an HTTP status.
int checkHead(const HttpConnection& connection, const struct soap* soap) {
  if (soap->status != SOAP_POST) // no HTTP request: the call-backs answer all other methods
    return 400;
  if (!isForService(soap))
    return 404;
  if (!connection.field("origin").empty()) // a script of a web page, even if its host name leads to this machine
    return 403;
  const std::string coding = connection.field("content-encoding");
  if (!coding.empty() && soap_tag_cmp(coding.c_str(), "identity"))
    return 415;
  // Web pages can send other types, or no type, to any server. text/xml is the type of SOAP 1.1.
  const std::string type = connection.field("content-type");
  const std::string media = type.substr(0, type.find_first_of("; \t"));
  return soap_tag_cmp(media.c_str(), "application/soap+xml") && soap_tag_cmp(media.c_str(), "text/xml") ? 415 : 0;
}

/// Skips a header. Refuses a header with an entry that must be understood.
int receiveHeader(struct soap* soap) {
  if (soap_element_begin_in(soap, "SOAP-ENV:Header", 0, nullptr))
    return soap->error == SOAP_TAG_MISMATCH ? soap->error = SOAP_OK : soap->error;
  if (!soap->body)
    return SOAP_OK;
  return soap_getindependent(soap) || soap_element_end_in(soap, "SOAP-ENV:Header") ? soap->error : SOAP_OK;
}

/// Reads up to the first element in the body. For an envelope of SOAP 1.1 it sets `soapVersion`, which the answer has
/// to use; every envelope that is not SOAP 1.2 gives SOAP_VERSIONMISMATCH.
int receiveEnvelope(struct soap* soap, short& soapVersion) {
  soap->version = 2;
  if (soap_element_begin_in(soap, "SOAP-ENV:Envelope", 0, nullptr)) {
    if (soap->error != SOAP_TAG_MISMATCH || std::strcmp(tarnwell::localPart(soap->tag), "Envelope") != 0)
      return soap->error;
    const char* const space = soap_current_namespace_tag(soap, soap->tag);
    if (space && std::strcmp(space, soap11Namespace) == 0)
      soapVersion = 1;
    return soap->error = SOAP_VERSIONMISMATCH;
  }
  return receiveHeader(soap) || soap_body_begin_in(soap) || soap_peek_element(soap) ? soap->error : SOAP_OK;
}

/// Reads the whole message: sets `index` to its operation and `request` to its request. Returns 0 or the runtime's
/// code; SOAP_STOP when a call-back has answered.
int receive(HttpConnection& connection, struct soap* soap, short& soapVersion, OperationIndex& index,
            const void*& request) {
  if (soap_begin_recv(soap) || (soap->error = checkHead(connection, soap)))
    return soap->error;
  connection.sendContinue();
  if (receiveEnvelope(soap, soapVersion))
    return soap->error;
  const auto* const operation = std::find_if(
      std::begin(tarnwell::operations), std::end(tarnwell::operations), [soap](const tarnwell::Operation& known) {
        return !soap_match_tag(soap, soap->tag, tarnwell::typeOf(known.request).name);
      });
  if (operation == std::end(tarnwell::operations))
    return soap->error = SOAP_NO_METHOD;
  index = static_cast<OperationIndex>(operation - std::begin(tarnwell::operations));
  const tarnwell::Type& type = tarnwell::typeOf(operation->request);
  request = tarnwell::readIndependent(soap, type.name, nullptr, nullptr, type);
  if (!request || soap_body_end_in(soap) || soap_envelope_end_in(soap) || connection.readToEnd() || soap_end_recv(soap))
    return soap->error;
  return SOAP_OK;
}

/// Sets a fault that the service itself has caused.
void setReceiverFault(struct soap* soap, const char* reason) {
  soap->version = 2;
  soap->fault = nullptr;
  soap_receiver_fault(soap, reason, nullptr);
}

} // namespace

RequestHandler::RequestHandler(const Options& serverOptions) : options(serverOptions) {
  unmatchedHash(); // computed now: the first login with an unknown name must not take longer than others
}

void RequestHandler::handle(struct soap* context) const noexcept {
  const auto start = std::chrono::steady_clock::now();
  context->fget = context->fhead = sendDescription;
  context->fput = context->fdel = context->fopt = refuseMethod;
  context->fpatch = [](struct soap*) { return 405; }; // for this method the runtime sets a wrong path
  HttpConnection connection(context, options.longestRequest);
  LogEntry entry;
  entry.client = std::string(context->host) + ":" + std::to_string(context->port);
  try {
    exchange(connection, context, entry);
  } catch (const std::exception& e) {
    setReceiverFault(context, e.what());
    entry.outcome = std::to_string(sendFault(context, 0, 2));
  }
  entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
  entry.received = connection.received;
  entry.sent = connection.sent;
  if (options.log)
    log(entry);
  soap_destroy(context); // frees request and answer before the wait for the client
  soap_dealloc(context, nullptr);
  connection.linger();
}

void RequestHandler::exchange(HttpConnection& connection, struct soap* soap, LogEntry& entry) const {
  short soapVersion = 2;
  OperationIndex index{};
  const void* request = nullptr;
  if (receive(connection, soap, soapVersion, index, request)) {
    entry.outcome = std::to_string(soap->error == SOAP_STOP ? 200 : sendFault(soap, connection.refusal(), soapVersion));
    return;
  }
  const tarnwell::Operation& operation = tarnwell::operations[static_cast<std::size_t>(index)];
  entry.operation = operation.name;
  std::this_thread::sleep_for(std::chrono::milliseconds(options.delay));
  const InjectedAnswer* const injected = options.faultInjection.find(index);
  if (injected && injected->kind == InjectedAnswer::Drop) {
    entry.outcome = "drop";
    return;
  }
  if (injected && injected->kind == InjectedAnswer::Fault)
    throw std::runtime_error("the command line asks for this fault");
  Store store(options.database, options.readOnly ? OpenMode::Read : OpenMode::Change);
  const Answer answered = answer(store, soap, index, request, injected);
  entry.user = answered.user;
  entry.outcome = answered.outcome;
  sendEnvelope(soap, SOAP_OK, [&] {
    return tarnwell::writeElement(soap, tarnwell::typeOf(operation.response).name, -1, answered.response, nullptr,
                                  tarnwell::typeOf(operation.response));
  });
}

} // namespace localservice
