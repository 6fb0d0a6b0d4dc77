// A host that uses the shared gSOAP runtime itself, with a namespace table and a header of its own.
#include <stdsoap2.h>

#include <sstream>

// What the runtime's library expects every program to supply.
struct Namespace namespaces[] = {{"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/", nullptr, nullptr},
                                 {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/", nullptr, nullptr},
                                 {"own", "urn:host", nullptr, nullptr},
                                 {nullptr, nullptr, nullptr, nullptr}};
int soap_putheader(struct soap* soap) { return soap_send(soap, "<own:Mark/>"); }
int soap_getheader(struct soap*) { return SOAP_OK; }
int soap_getfault(struct soap*) { return SOAP_OK; }
int soap_putfault(struct soap*) { return SOAP_OK; }
void soap_serializeheader(struct soap*) {}
void soap_serializefault(struct soap*) {}
void soap_fault(struct soap*) {}
static const char* text = "the host's";
const char** soap_faultcode(struct soap*) { return &text; }
const char** soap_faultsubcode(struct soap*) { return &text; }
const char** soap_faultstring(struct soap*) { return &text; }
const char** soap_faultdetail(struct soap*) { return &text; }
const char* soap_fault_subcode(struct soap*) { return text; }
const char* soap_fault_string(struct soap*) { return text; }
const char* soap_fault_detail(struct soap*) { return text; }
extern "C" {
void* soap_getelement(struct soap*, const char*, int*) { return nullptr; }
int soap_putelement(struct soap*, const void*, const char*, int, int) { return SOAP_OK; }
void soap_markelement(struct soap*, const void*, int) {}
void* soap_dupelement(struct soap*, const void*, int) { return nullptr; }
void soap_delelement(const void*, int) {}
}

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
