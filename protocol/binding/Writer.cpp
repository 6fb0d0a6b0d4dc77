#include "protocol/binding/Writer.h"

#include "protocol/runtime/RuntimeInternals.h"

namespace tarnwell {
namespace {

/// Where a row's member is; records are only read through it here.
const void* memberOf(const Row& row, const void* record) { return row.member(const_cast<void*>(record)); }

int writeList(struct soap* soap, const Row& row, const void* list) {
  for (std::size_t i = 0; i < row.list->size(list); ++i) {
    const void* const entry = row.list->at(list, i);
    if (writePointer(soap, row.tag, -1, &entry, nullptr, typeOf(row.type)))
      return soap->error;
  }
  return SOAP_OK;
}

int writeMember(struct soap* soap, const Row& row, const void* record) {
  const void* const member = memberOf(row, record);
  const Type& type = typeOf(row.type);
  if (row.list)
    return writeList(soap, row, member);
  if (row.occurs == Occurs::Required)
    return writeElement(soap, row.tag, -1, member, nullptr, type);
  const auto* const pointer = static_cast<const void* const*>(member);
  if (!type.codec->characters)
    return writePointer(soap, row.tag, -1, pointer, nullptr, type);
  if (*pointer)
    return writeElement(soap, row.tag, -1, pointer, nullptr, type);
  return row.occurs == Occurs::RequiredNillable ? soap_element_nil(soap, row.tag) : SOAP_OK;
}

} // namespace

int writeRecord(struct soap* soap, const Type& type, const void* record) {
  for (std::size_t i = 0; i < type.rowCount; ++i)
    if (writeMember(soap, type.rows[i], record))
      return soap->error;
  return SOAP_OK;
}

int writeElement(struct soap* soap, const char* tag, int id, const void* value, const char* name, const Type& type) {
  if (!type.codec->announce)
    id = soap_embedded_id(soap, id, value, type.number);
  else if (!type.codec->announce(soap, type, value, tag, id, name))
    return soap->error;
  if (soap_element_begin_out(soap, tag, id, name) || type.codec->write(soap, type, value))
    return soap->error;
  return soap_element_end_out(soap, tag);
}

int writePointer(struct soap* soap, const char* tag, int id, const void* const* slot, const char* name,
                 const Type& type) {
  id = soap_element_id(soap, tag, id, *slot, nullptr, 0, name, type.number, nullptr);
  return id < 0 ? soap->error : writeElement(soap, tag, id, *slot, name, type);
}

int writePending(struct soap* soap) {
  return forEachPending(soap, [](struct soap* context, const void* object, int id, int number) {
    return writeAnyElement(context, object, "id", id, number);
  });
}

int writeIndependent(struct soap* soap, const char* tag, const void* value, const char* name, const Type& type) {
  if (writeElement(soap, tag ? tag : type.name, -2, value, name, type))
    return soap->error;
  return writePending(soap);
}

int writeAnyElement(struct soap* soap, const void* value, const char* tag, int id, int number) {
  const Type* const type = findType(number);
  if (!type)
    return number ? soap_element_empty(soap, tag, 0, nullptr) : SOAP_OK;
  const void* const object = type->codec->characters ? &value : value;
  if (type->message)
    return writeElement(soap, type->name, id, object, nullptr, *type);
  return writeElement(soap, tag, id, object, type->name, *type);
}

void serialize(struct soap* soap, const void* value, const Type& type) {
  if (type.codec->mark)
    type.codec->mark(soap, type, value);
  for (std::size_t i = 0; i < type.rowCount; ++i) {
    const Row& row = type.rows[i];
    const void* const member = memberOf(row, value);
    const Type& target = typeOf(row.type);
    const std::size_t count = row.list ? row.list->size(member) : row.occurs == Occurs::Optional;
    for (std::size_t k = 0; k < count && !target.codec->characters; ++k) {
      const void* const object = row.list ? row.list->at(member, k) : *static_cast<const void* const*>(member);
      // Of an object that is referred to twice, the first time counts; document/literal has no references.
      if (object && (!soap_reference(soap, object, target.number) || !soap->encodingStyle))
        serialize(soap, object, target);
    }
  }
}

} // namespace tarnwell
