#include "protocol/soap/Envelope.h"

#include "protocol/binding/Reader.h"
#include "protocol/binding/Writer.h"
#include "protocol/soap/RuntimeInternals.h"

namespace tarnwell {
namespace {

/// Skips whatever is in a header, also what says that it must be understood.
int readHeader(struct soap* soap, const Type&, void*) {
  while (soap->body && peekElement(soap) == SOAP_OK) {
    if (skipElement(soap))
      return soap->error;
    soap->body = 1;
  }
  return soap->error == SOAP_NO_TAG ? soap->error = SOAP_OK : soap->error;
}

int writeHeader(struct soap*, const Type&, const void*) { return SOAP_OK; }

int writeReason(struct soap* soap, const Type& type, const void* value) {
  if (soap->lang && soap_set_attr(soap, "xml:lang", soap->lang, 1))
    return soap->error;
  return writeRecord(soap, type, value);
}

/// The first element of a type of the binding, and the first of any other kind as literal XML.
int readDetail(struct soap* soap, const Type&, void* value) {
  SOAP_ENV__Detail& detail = *static_cast<SOAP_ENV__Detail*>(value);
  while (soap->body && peekElement(soap) == SOAP_OK) {
    const unsigned level = soap->level;
    if (!detail.fault && level < maximumDepth)
      detail.fault = readAnyElement(soap, nullptr, &detail.__type);
    else
      soap->error = SOAP_TAG_MISMATCH;
    if (soap->error == SOAP_TAG_MISMATCH && soap->level == level) {
      soap->error = SOAP_OK;
      detail.__type = detail.fault ? detail.__type : 0;
      if (detail.__any)
        skipElement(soap);
      else
        soap_inliteral(soap, "-any", &detail.__any);
    }
    if (soap->error)
      return soap->error;
    soap->body = 1;
  }
  return soap->error == SOAP_NO_TAG ? soap->error = SOAP_OK : soap->error;
}

int writeDetail(struct soap* soap, const Type&, const void* value) {
  const SOAP_ENV__Detail& detail = *static_cast<const SOAP_ENV__Detail*>(value);
  if (detail.fault && writeAnyElement(soap, detail.fault, "fault", -1, detail.__type))
    return soap->error;
  return detail.__any ? soap_outliteral(soap, "-any", &detail.__any, nullptr) : SOAP_OK;
}

} // namespace

constexpr Codec headerCodec = {readHeader, writeHeader, false};
constexpr Codec reasonCodec = {readRecord, writeReason, false};
constexpr Codec detailCodec = {readDetail, writeDetail, false};

const char* faultCode(const struct soap* soap) {
  const SOAP_ENV__Fault* const fault = soap->fault;
  if (!fault)
    return nullptr;
  return fault->SOAP_ENV__Code ? fault->SOAP_ENV__Code->SOAP_ENV__Value : fault->faultcode;
}

} // namespace tarnwell
