#include "protocol/soap/RuntimeCallbacks.h"

#include "protocol/binding/Reader.h"
#include "protocol/binding/Writer.h"
#include "protocol/runtime/RuntimeInternals.h"
#include "protocol/schema/Envelope.h"

#include <new>

using namespace tarnwell;

namespace {

/// Makes the part of the fault that `part` points to, unless it is there.
template <class Part> Part* require(struct soap* soap, Part*& part) {
  if (!part)
    part = static_cast<Part*>(instantiate(soap, -1, typeOf(Part::number), nullptr));
  return part;
}

/// The fault of the context, made in the form of the message's SOAP version unless it is there. Null: out of memory.
SOAP_ENV__Fault* requireFault(struct soap* soap) {
  soap_fault(soap);
  return soap->fault;
}

bool isVersion12(const struct soap* soap) { return soap->version == 2; }

/// The place of a text of the fault, as the runtime declares it. Null, for want of memory: the runtime writes there
/// without a test, so it gets a place in the context, since several threads would write to a common one.
const char** place(struct soap* soap, char** text) {
  return text ? const_cast<const char**>(text) : new (&userData(soap, UserData::SpareText)) const char*(nullptr);
}

} // namespace

void soap_header(struct soap* soap) { require(soap, soap->header); }

int soap_getheader(struct soap* soap) {
  soap->part = SOAP_IN_HEADER;
  const Type& type = typeOf(SOAP_TYPE_SOAP_ENV__Header);
  soap->header = static_cast<SOAP_ENV__Header*>(readElement(soap, "SOAP-ENV:Header", nullptr, nullptr, type));
  soap->part = SOAP_END_HEADER;
  return soap->header == nullptr;
}

int soap_putheader(struct soap* soap) {
  if (!soap->version || !soap->header)
    return SOAP_OK;
  soap->part = SOAP_IN_HEADER;
  if (writeElement(soap, "SOAP-ENV:Header", -1, soap->header, nullptr, typeOf(SOAP_TYPE_SOAP_ENV__Header)))
    return soap->error;
  soap->part = SOAP_END_HEADER;
  return SOAP_OK;
}

void soap_serializeheader(struct soap*) {} // a header has nothing to mark

void soap_fault(struct soap* soap) {
  if (!require(soap, soap->fault) || !isVersion12(soap) || soap->fault->faultcode)
    return;
  require(soap, soap->fault->SOAP_ENV__Code);
  require(soap, soap->fault->SOAP_ENV__Reason);
}

int soap_getfault(struct soap* soap) {
  const Type& type = typeOf(SOAP_TYPE_SOAP_ENV__Fault);
  soap->fault = static_cast<SOAP_ENV__Fault*>(readIndependent(soap, "SOAP-ENV:Fault", nullptr, nullptr, type));
  return soap->fault == nullptr;
}

int soap_putfault(struct soap* soap) {
  return soap->fault ? writeIndependent(soap, nullptr, soap->fault, nullptr, typeOf(SOAP_TYPE_SOAP_ENV__Fault))
                     : SOAP_OK;
}

void soap_serializefault(struct soap* soap) {
  if (soap->fault)
    serialize(soap, soap->fault, typeOf(SOAP_TYPE_SOAP_ENV__Fault));
}

const char** soap_faultcode(struct soap* soap) {
  SOAP_ENV__Fault* const fault = requireFault(soap);
  if (fault && fault->SOAP_ENV__Code)
    return place(soap, &fault->SOAP_ENV__Code->SOAP_ENV__Value);
  return place(soap, fault ? &fault->faultcode : nullptr);
}

const char** soap_faultsubcode(struct soap* soap) {
  SOAP_ENV__Fault* const fault = requireFault(soap);
  if (!fault || !fault->SOAP_ENV__Code)
    return place(soap, fault ? &fault->faultcode : nullptr);
  SOAP_ENV__Code* const subcode = require(soap, fault->SOAP_ENV__Code->SOAP_ENV__Subcode);
  return place(soap, subcode ? &subcode->SOAP_ENV__Value : nullptr);
}

const char* soap_fault_subcode(struct soap* soap) {
  if (!soap->fault || !soap->fault->SOAP_ENV__Code)
    return soap->fault ? soap->fault->faultcode : nullptr;
  const SOAP_ENV__Code* const subcode = soap->fault->SOAP_ENV__Code->SOAP_ENV__Subcode;
  return subcode ? subcode->SOAP_ENV__Value : nullptr;
}

const char** soap_faultstring(struct soap* soap) {
  SOAP_ENV__Fault* const fault = requireFault(soap);
  if (fault && fault->SOAP_ENV__Reason)
    return place(soap, &fault->SOAP_ENV__Reason->SOAP_ENV__Text);
  return place(soap, fault ? &fault->faultstring : nullptr);
}

const char* soap_fault_string(struct soap* soap) { return *soap_faultstring(soap); }

const char** soap_faultdetail(struct soap* soap) {
  SOAP_ENV__Fault* const fault = requireFault(soap);
  if (!fault)
    return place(soap, nullptr);
  SOAP_ENV__Detail* const detail = require(soap, isVersion12(soap) ? fault->SOAP_ENV__Detail : fault->detail);
  return place(soap, detail ? &detail->__any : nullptr);
}

const char* soap_fault_detail(struct soap* soap) { // asking makes none
  const SOAP_ENV__Fault* const fault = soap->fault;
  const SOAP_ENV__Detail* const detail = !fault ? nullptr : isVersion12(soap) ? fault->SOAP_ENV__Detail : fault->detail;
  return detail ? detail->__any : nullptr;
}

void* soap_getelement(struct soap* soap, const char* tag, int* number) { return readAnyElement(soap, tag, number); }

int soap_putelement(struct soap* soap, const void* value, const char* tag, int id, int number) {
  return writeAnyElement(soap, value, tag, id, number);
}

void soap_markelement(struct soap* soap, const void* value, int number) {
  const Type* const type = findType(number);
  if (value && type && !type->codec->characters)
    serialize(soap, value, *type);
}

void* soap_dupelement(struct soap*, const void*, int) { return nullptr; }
void soap_delelement(const void*, int) {}

int soap_getindependent(struct soap* soap) { return readFollowing(soap); }

int soap_putindependent(struct soap* soap) { return writePending(soap); }

int soap_ignore_element(struct soap* soap) { return skipUnknown(soap); }
