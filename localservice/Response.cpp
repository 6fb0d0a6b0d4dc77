#include "localservice/Response.h"

#include "protocol/desktopservice.h"

#include <cstring>

namespace localservice {

namespace {

/// Resets the context's state of reading, such as the request's prefixes. The objects that were read stay.
void beginResponse(struct soap* soap, short soapVersion) {
  soap_begin(soap);
  soap_set_version(soap, soapVersion);
  soap->encodingStyle = nullptr; // document/literal
  soap->action = nullptr;        // otherwise the runtime would repeat the request's action
}

void sendEnvelopeBegun(struct soap* soap, int status, const std::function<int()>& writeContent) {
  const auto write = [&] {
    return soap_envelope_begin_out(soap) || soap_body_begin_out(soap) || writeContent() || soap_body_end_out(soap) ||
           soap_envelope_end_out(soap);
  };
  const bool isCounted = !soap_begin_count(soap) && !(soap->mode & SOAP_IO_LENGTH && write()) && !soap_end_count(soap);
  if (isCounted && !soap_response(soap, status) && !write())
    static_cast<void>(soap_end_send(soap));
}

int statusOf(int error, const char* faultCode) {
  if (error >= 400 && error < 600)
    return error;
  if (error == SOAP_HDR)
    return 431;
  const bool isSenders = error == SOAP_EOF || std::strcmp(faultCode, "SOAP-ENV:Sender") == 0;
  return isSenders ? 400 : 500;
}

} // namespace

void sendEnvelope(struct soap* soap, int status, const std::function<int()>& writeContent) {
  beginResponse(soap, 2);
  sendEnvelopeBegun(soap, status, writeContent);
}

int sendFault(struct soap* soap, const Refusal* refusal, short soapVersion) {
  const int error = soap->error;
  if (soap->version != 2 || refusal) // before it reads the envelope, the runtime sets texts of HTTP errors here
    soap->fault = nullptr;
  soap->version = soapVersion;
  if (refusal && refusal->status >= 500)
    soap_receiver_fault(soap, refusal->reason, nullptr);
  else if (refusal)
    soap_sender_fault(soap, refusal->reason, nullptr);
  else if (error == SOAP_EOM)
    soap_set_receiver_error(soap, nullptr, nullptr, error);
  soap_set_fault(soap); // fills in code (Sender) and text where they are missing
  const char** const text = soap_faultstring(soap);
  *text = soap_strdup(soap, *text); // a copy, because sending overwrites the buffer of the text
  const int status = refusal ? refusal->status : statusOf(error, *soap_faultcode(soap));
  beginResponse(soap, soapVersion);
  if (status == refusals::noSuchMethod.status)
    soap->http_extra_header = "Allow: GET, HEAD, POST";
  sendEnvelopeBegun(soap, status, [soap] { return soap_putfault(soap); });
  return status;
}

int sendDocument(struct soap* soap, const std::string& xml) {
  beginResponse(soap, 2);
  soap->http_content = "text/xml; charset=utf-8";
  if (soap_response(soap, SOAP_FILE) || soap_send_raw(soap, xml.data(), xml.size()))
    return soap->error;
  return soap_end_send(soap);
}

} // namespace localservice
