#include "protocol/schema/Envelope.h"

#include "protocol/binding/Reader.h"
#include "protocol/binding/Text.h"
#include "protocol/binding/Writer.h"
#include "protocol/runtime/RuntimeInternals.h"

namespace tarnwell {
namespace {

/// Calls `take` for each child of the element that is open; it takes the child peeked at, or fails.
template <class Take> int readChildren(struct soap* soap, Take take) {
  while (soap->body && peekElement(soap) == SOAP_OK) {
    if (take())
      return soap->error;
    soap->body = 1;
  }
  return soap->error == SOAP_NO_TAG ? soap->error = SOAP_OK : soap->error;
}

/// Skips whatever is in a header, also what says that it must be understood.
int readHeader(struct soap* soap, const Type&, void*) {
  return readChildren(soap, [soap] { return skipElement(soap); });
}

int writeHeader(struct soap*, const Type&, const void*) { return SOAP_OK; }

/// A reason has a text for each language (SOAP 1.2 Part 1 section 5.4.2): the first is kept.
int readReason(struct soap* soap, const Type&, void* value) {
  SOAP_ENV__Reason& reason = *static_cast<SOAP_ENV__Reason*>(value);
  return readChildren(soap, [&] {
    if (soap_match_tag(soap, soap->tag, "SOAP-ENV:Text"))
      return skipUnknown(soap);
    if (reason.SOAP_ENV__Text)
      return skipElement(soap);
    return readElement(soap, "SOAP-ENV:Text", &reason.SOAP_ENV__Text, nullptr, typeOf(SOAP_TYPE_string)) ? SOAP_OK
                                                                                                         : soap->error;
  });
}

int writeReason(struct soap* soap, const Type& type, const void* value) {
  const bool hasText = static_cast<const SOAP_ENV__Reason*>(value)->SOAP_ENV__Text != nullptr;
  if (hasText && soap->lang && soap_set_attr(soap, "xml:lang", soap->lang, 1))
    return soap->error;
  return writeRecord(soap, type, value);
}

/// Keeps the element peeked at, or text, as literal XML, unless some is kept already.
int readLiteral(struct soap* soap, SOAP_ENV__Detail& detail) {
  std::string markup;
  if (skipElement(soap, detail.__any ? nullptr : &markup))
    return soap->error;
  if (!detail.__any)
    detail.__any = soap_strdup(soap, markup.c_str());
  return detail.__any ? SOAP_OK : soap->error = SOAP_EOM;
}

/// The first element of a type of the binding, and the first of any other kind as literal XML. A detail that begins
/// with text is literal XML from there to its end.
int readDetail(struct soap* soap, const Type&, void* value) {
  SOAP_ENV__Detail& detail = *static_cast<SOAP_ENV__Detail*>(value);
  const int error = readChildren(soap, [&] {
    const unsigned level = soap->level;
    if (!detail.fault && level < maximumDepth)
      detail.fault = readAnyElement(soap, nullptr, &detail.__type);
    else
      soap->error = SOAP_TAG_MISMATCH;
    if (soap->error == SOAP_TAG_MISMATCH && soap->level == level) {
      soap->error = SOAP_OK;
      detail.__type = detail.fault ? detail.__type : 0;
      readLiteral(soap, detail);
    }
    return soap->error;
  });
  return error || !isBeforeText(soap) ? error : readLiteral(soap, detail);
}

int writeDetail(struct soap* soap, const Type&, const void* value) {
  const SOAP_ENV__Detail& detail = *static_cast<const SOAP_ENV__Detail*>(value);
  if (detail.fault && writeAnyElement(soap, detail.fault, "fault", -1, detail.__type))
    return soap->error;
  return detail.__any ? soap_outliteral(soap, "-any", &detail.__any, nullptr) : SOAP_OK;
}

} // namespace

constexpr Codec headerCodec = {readHeader, writeHeader};
constexpr Codec reasonCodec = {readReason, writeReason};
constexpr Codec detailCodec = {readDetail, writeDetail};

const char* faultCode(const struct soap* soap) {
  const SOAP_ENV__Fault* const fault = soap->fault;
  if (!fault)
    return nullptr;
  return fault->SOAP_ENV__Code ? fault->SOAP_ENV__Code->SOAP_ENV__Value : fault->faultcode;
}

} // namespace tarnwell
