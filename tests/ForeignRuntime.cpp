// A host that uses the shared gSOAP runtime itself, with a namespace table and a header of its own. Of what the
// runtime's library asks every program for, it supplies what it uses.
#include <stdsoap2.h>

#include <sstream>

struct Namespace namespaces[] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/", nullptr, nullptr},
                                 {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/", nullptr, nullptr},
                                 {"own", "urn:host", nullptr, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr}};
int soap_putheader(struct soap* soap) { return soap_send(soap, "<own:Mark/>"); }

std::string foreignEnvelope() {
  std::ostringstream out;
  struct soap* soap = soap_new();
  soap->os = &out;
  const bool failed = soap_begin_send(soap) || soap_envelope_begin_out(soap) || soap_putheader(soap) ||
                      soap_body_begin_out(soap) || soap_body_end_out(soap) || soap_envelope_end_out(soap) ||
                      soap_end_send(soap);
  soap_destroy(soap);
  soap_end(soap);
  soap_free(soap);
  return failed ? "failed" : out.str();
}
