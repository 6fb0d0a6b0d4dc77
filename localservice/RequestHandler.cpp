#include "localservice/RequestHandler.h"

#include "localservice/Description.h"
#include "localservice/Handlers.h"
#include "localservice/PasswordHash.h"
#include "localservice/Response.h"
#include "protocol/binding/Reader.h"

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
  const std::string_view target = soap->path;
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

/// The runtime's callback for methods that the service does not support.
int refuseMethod(struct soap* soap) {
  return HttpConnection::of(soap).refuse(isForService(soap) ? refusals::noSuchMethod : refusals::noSuchPath);
}

/// The runtime's callback for GET and HEAD. The description contains the address that the client has used.
int sendDescription(struct soap* soap) {
  if (!isForService(soap) || !asksForDescription(soap))
    return refuseMethod(soap);
  const HttpConnection& connection = HttpConnection::of(soap);
  const std::string host = connection.field("host");
  return sendDocument(soap, serviceDescription(host.empty() ? connection.service.url : "http://" + host + servicePath));
}

/// Checks a POST request before its content is read.
const Refusal* checkHead(const HttpConnection& connection, const struct soap* soap) {
  if (!isForService(soap))
    return &refusals::noSuchPath;
  if (!connection.field("origin").empty()) // a script of a web page, even if its host name leads to this machine
    return &refusals::fromWebPage;
  const std::string coding = connection.field("content-encoding");
  if (!coding.empty() && soap_tag_cmp(coding.c_str(), "identity"))
    return &refusals::compressed;
  // Web pages can send other types, or no type, to any server. text/xml is the type of SOAP 1.1.
  const std::string type = connection.field("content-type");
  const std::string media = type.substr(0, type.find_first_of("; \t"));
  const bool isSoap = !soap_tag_cmp(media.c_str(), "application/soap+xml") || !soap_tag_cmp(media.c_str(), "text/xml");
  return isSoap ? nullptr : &refusals::otherType;
}

/// The value, without white space around it, of an attribute of the element peeked at; empty when it has none.
std::string_view attribute(struct soap* soap, const char* name) {
  for (const struct soap_attribute* each = soap->attributes; each; each = each->next) {
    if (!each->visible || !each->value || !std::strchr(each->name, ':') || soap_match_tag(soap, each->name, name))
      continue;
    const std::string_view value = each->value;
    const std::size_t start = std::min(value.find_first_not_of(" \t\r\n"), value.size());
    return value.substr(start, value.find_last_not_of(" \t\r\n") + 1 - start);
  }
  soap->error = SOAP_OK; // of a prefix that is not declared
  return {};
}

/// Whether the header entry peeked at concerns this service, the last node of the message's way, and must be understood
/// (SOAP 1.2 Part 1 sections 2.2 and 5.2.3).
bool mustBeUnderstood(struct soap* soap) {
  const std::string_view must = attribute(soap, "SOAP-ENV:mustUnderstand");
  const std::string_view role = attribute(soap, "SOAP-ENV:role");
  constexpr std::string_view roles = "http://www.w3.org/2003/05/soap-envelope/role/";
  const bool isOurs =
      role.empty() || (role.substr(0, roles.size()) == roles &&
                       (role.substr(roles.size()) == "next" || role.substr(roles.size()) == "ultimateReceiver"));
  return isOurs && (must == "1" || must == "true");
}

/// Sets the fault for a header entry that must be understood.
int refuseHeaderEntry(struct soap* soap) {
  const std::string reason = std::string("the service understands no header entry, and ") + soap->tag +
                             " must be understood: send no header (switch off WS-Addressing and WS-Security)";
  *soap_faultcode(soap) = "SOAP-ENV:MustUnderstand";
  *soap_faultstring(soap) = soap_strdup(soap, reason.c_str());
  return soap->error = SOAP_MUSTUNDERSTAND;
}

/// Skips a header. Refuses a header with an entry that must be understood.
int receiveHeader(struct soap* soap) {
  if (soap_element_begin_in(soap, "SOAP-ENV:Header", 0, nullptr))
    return soap->error == SOAP_TAG_MISMATCH ? soap->error = SOAP_OK : soap->error;
  if (!soap->body)
    return SOAP_OK;
  while (!soap_peek_element(soap)) {
    if (mustBeUnderstood(soap))
      return refuseHeaderEntry(soap);
    soap->mustUnderstand = 0; // the runtime would also refuse entries for others
    if (tarnwell::skipUnknown(soap))
      return soap->error;
  }
  soap->error = soap->error == SOAP_NO_TAG ? SOAP_OK : soap->error;
  return soap->error || soap_element_end_in(soap, "SOAP-ENV:Header") ? soap->error : SOAP_OK;
}

/// Reads up to the first element in the body. For an envelope of SOAP 1.1 it sets `soapVersion`, which the response
/// has to use; every envelope that is not SOAP 1.2 gives SOAP_VERSIONMISMATCH.
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
/// code; SOAP_STOP when a callback has responded.
int receive(HttpConnection& connection, struct soap* soap, short& soapVersion, OperationIndex& index, void*& request) {
  if (soap_begin_recv(soap))
    return soap->error;
  if (soap->status != SOAP_POST) // no HTTP request: callbacks respond to the other methods
    return soap->error = connection.refuse(refusals::noHttp);
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

RequestHandler::RequestHandler(const Options& serverOptions, const DatabaseFile& file, const std::string& url)
    : options(serverOptions), service{url, options.bytes("max-request"), checkHead}, stores(file),
      memory(options.bytes("max-memory")), delay(options.number("delay")), logs(options.isSet("log")) {
  unmatchedHash(); // computed now: the first login with an unknown name must not take longer than others
  if (options.isSet("trace"))
    trace.emplace(options.text("trace"));
}

void RequestHandler::handle(struct soap* context) noexcept {
  const auto start = std::chrono::steady_clock::now();
  context->fget = context->fhead = sendDescription;
  context->fput = context->fdel = context->fopt = refuseMethod;
  context->fpatch = [](struct soap* soap) { // for this method the runtime sets a wrong path
    return HttpConnection::of(soap).refuse(refusals::noSuchMethod);
  };
  Reservation reservation(memory);
  TracedExchange traced;
  HttpConnection connection(context, service, reservation, trace ? &traced : nullptr);
  LogEntry entry;
  entry.client = std::string(context->host) + ":" + std::to_string(context->port);
  try {
    exchange(connection, context, reservation, entry);
  } catch (const Refused& e) {
    entry.outcome = std::to_string(sendFault(context, &e.refusal, 2));
  } catch (const std::exception& e) {
    setReceiverFault(context, e.what());
    entry.outcome = std::to_string(sendFault(context, nullptr, 2));
  }
  entry.duration = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
  entry.received = connection.received;
  entry.sent = connection.sent;
  if (logs)
    log(entry);
  if (trace)
    trace->write(traced, entry);
  soap_destroy(context); // frees request and response before the wait for the client
  soap_dealloc(context, nullptr);
  reservation.release();
  connection.linger();
}

void RequestHandler::exchange(HttpConnection& connection, struct soap* soap, Reservation& reservation,
                              LogEntry& entry) {
  short soapVersion = 2;
  OperationIndex index{};
  void* request = nullptr;
  if (receive(connection, soap, soapVersion, index, request)) {
    entry.outcome = std::to_string(soap->error == SOAP_STOP ? 200 : sendFault(soap, connection.refusal(), soapVersion));
    return;
  }
  const tarnwell::Operation& operation = tarnwell::operations[static_cast<std::size_t>(index)];
  entry.operation = operation.name;
  entry.user = userOf(soap, index, request);
  std::this_thread::sleep_for(delay);
  const InjectedResponse* const injected = options.faultInjection.find(index);
  if (injected && injected->kind == InjectedResponse::Drop) {
    entry.outcome = "drop";
    return;
  }
  if (injected && injected->kind == InjectedResponse::Fault)
    throw std::runtime_error("the command line asks for this fault");
  const Outcome outcome = carryOut(*stores.take(), soap, index, request, injected, reservation);
  entry.outcome = outcome.name;
  sendEnvelope(soap, SOAP_OK, [&] {
    return tarnwell::writeElement(soap, tarnwell::typeOf(operation.response).name, -1, outcome.response, nullptr,
                                  tarnwell::typeOf(operation.response));
  });
}

} // namespace localservice
