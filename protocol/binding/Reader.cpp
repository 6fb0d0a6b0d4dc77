#include "protocol/binding/Reader.h"

#include "protocol/binding/Receiver.h"
#include "protocol/soap/RuntimeInternals.h"

#include <cstring>
#include <string>

namespace tarnwell {
namespace {

/// The row of the element peeked at, among those not yet read; null if there is none. The search begins at `next`,
/// since elements mostly come in order.
const Row* findRow(struct soap* soap, const Type& type, unsigned long seen, std::size_t next) {
  const char* const colon = std::strchr(soap->tag, ':');
  const char* const local = colon ? colon + 1 : soap->tag;
  for (std::size_t i = 0; i < type.rowCount; ++i) {
    const std::size_t at = next + i < type.rowCount ? next + i : next + i - type.rowCount;
    const Row& row = type.rows[at];
    if (*local == *row.local && !(seen >> at & 1) && std::strcmp(local, row.local) == 0 &&
        hasName(soap, row.tag, row.local, colon != nullptr))
      return &row;
  }
  return nullptr;
}

/// Whether an xsi:type fits: it names the type itself or has another local part that the type accepts.
bool typeFits(struct soap* soap, const char* name, const Type& type) {
  if (!*soap->type || !type.accepts || !name || !*name || soap_match_tag(soap, soap->type, name) == SOAP_OK)
    return true;
  soap->error = SOAP_OK; // an undeclared prefix left one
  const std::string local = localPart(soap->type);
  return local.find(':') == local.npos && std::strstr(type.accepts, (':' + local + ':').c_str());
}

/// Takes the start tag `tag` (null: any).
int beginElement(struct soap* soap, const char* tag, bool nillable) {
  return peekElement(soap) ? soap->error : soap_element_begin_in(soap, tag, nillable, nullptr);
}

/// The answer has an id or a reference.
void noteReference(struct soap* soap) {
  if (Receiver* const receiver = receiverOf(soap))
    receiver->hasReferences = true;
}

/// Whether the element refers to another one's id.
bool isReference(struct soap* soap) {
  if (*soap->href != '#')
    return false;
  noteReference(soap);
  return true;
}

/// Registers `value` under its element's id for references to it.
bool enterId(struct soap* soap, void* value, const Type& type) {
  noteReference(soap);
  const std::string id = soap->id; // the runtime copies it into the context again
  return soap_id_enter(soap, id.c_str(), value, type.number, type.size, nullptr, nullptr, nullptr, nullptr) != nullptr;
}

/// Reads what follows the start tag just taken into `value`.
void* readAfterTag(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  const bool open = soap->body != 0;
  if (!typeFits(soap, name, type)) {
    soap->error = SOAP_TYPE;
    return nullptr;
  }
  if (type.codec->characters) {
    char** const characters = static_cast<char**>(value);
    if (isReference(soap)) {
      if (!soap_id_lookup(soap, soap->href, static_cast<void**>(value), type.number, type.size, 0, nullptr))
        return nullptr;
    } else if (!soap->null &&
               (type.codec->read(soap, type, value) || (*soap->id && !enterId(soap, *characters, type)))) {
      return nullptr;
    }
  } else {
    if (*soap->id && !enterId(soap, value, type))
      return nullptr;
    if (isReference(soap)) {
      if (!soap_id_forward(soap, soap->href, value, 0, type.number, type.number, type.size, 0, resolve, nullptr))
        return nullptr;
    } else if (!soap->null && type.codec->read(soap, type, value)) {
      return nullptr;
    }
  }
  return open && endElement(soap, tag) ? nullptr : value;
}

/// The rest of readElement(), after the start tag.
void* readElementAfterTag(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  if (!value && !(value = instantiate(soap, -1, type, nullptr)))
    return nullptr;
  return readAfterTag(soap, tag, value, name, type);
}

/// The rest of readPointer(), after the start tag.
void* readPointerAfterTag(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type) {
  if (!slot && !(slot = soap_malloc(soap, sizeof(void*))))
    return nullptr;
  void** const pointer = static_cast<void**>(slot);
  *pointer = nullptr;
  if (soap->null || isReference(soap)) {
    const bool open = soap->body != 0;
    if (*soap->href == '#' && !soap_id_lookup(soap, soap->href, pointer, type.number, type.size, 0, nullptr))
      return nullptr;
    return open && endElement(soap, tag) ? nullptr : slot;
  }
  void* const value = instantiate(soap, -1, type, nullptr);
  if (!value || !readAfterTag(soap, tag, value, name, type))
    return nullptr;
  *pointer = value;
  return slot;
}

/// Offers an entry to the receiver, unless something may refer to it or into it: an attachment is stored there later.
bool isTaken(struct soap* soap, const Type& type, void* entry) {
  Receiver* const receiver = receiverOf(soap);
  return receiver && !receiver->hasReferences && !soap->xlist && receiver->take(type, entry);
}

/// Reads one entry of a list; one given by reference takes its place in the list when the reference is resolved.
int readEntry(struct soap* soap, const Row& row, void* list) {
  const Type& type = typeOf(row.type);
  void* entry = nullptr;
  if (!isReference(soap)) {
    const soap_clist* const object = soap->clist;
    const void* const data = soap->alist;
    if (!readPointerAfterTag(soap, row.tag, &entry, nullptr, type))
      return soap->error;
    if (entry && isTaken(soap, type, entry))
      deleteSince(soap, object, data);
    else
      row.list->append(list, entry);
    return SOAP_OK;
  }
  const bool open = soap->body != 0;
  if (!soap_id_forward(soap, soap->href, list, row.list->size(list), type.number, type.number, type.size, 1,
                       row.list->place, nullptr))
    return soap->error;
  row.list->append(list, nullptr);
  return open ? endElement(soap, row.tag) : SOAP_OK;
}

/// Reads the element peeked at, which is that of `row`.
int readMember(struct soap* soap, const Row& row, void* record) {
  void* const member = row.member(record);
  const Type& type = typeOf(row.type);
  const bool pointer = row.occurs == Occurs::Optional && !type.codec->characters;
  if (takeElement(soap, pointer || type.codec->characters || row.occurs == Occurs::Repeated))
    return soap->error;
  if (row.occurs == Occurs::Repeated)
    return readEntry(soap, row, member);
  const auto read = pointer ? readPointerAfterTag : readElementAfterTag;
  return read(soap, row.tag, member, type.name, type) ? SOAP_OK : soap->error;
}

/// Reads the element peeked at into the member of `row`, or skips it when `row` is null.
int readChild(struct soap* soap, const Row* row, void* record) {
  if (!row)
    return skipUnknown(soap);
  if (soap->level >= maximumDepth)
    return skipElement(soap);
  return readMember(soap, *row, record);
}

} // namespace

int skipElement(struct soap* soap) {
  soap->peeked = 0;
  soap->error = SOAP_OK;
  return soap->body ? soap_ignore(soap) : SOAP_OK;
}

int skipUnknown(struct soap* soap) {
  if (peekElement(soap))
    return soap->error;
  if (soap->mustUnderstand && !soap->other)
    return soap->error = SOAP_MUSTUNDERSTAND;
  if (soap->mode & SOAP_XML_STRICT || soap_match_tag(soap, soap->tag, "SOAP-ENV:") == SOAP_OK)
    return soap->error = SOAP_TAG_MISMATCH;
  soap->error = SOAP_OK; // an undeclared prefix left one
  if (*soap->id && soap->level < maximumDepth) {
    const unsigned level = soap->level;
    int number = 0;
    readAnyElement(soap, nullptr, &number);
    if (soap->error != SOAP_TAG_MISMATCH || soap->level != level)
      return soap->error;
  }
  return skipElement(soap);
}

int readRecord(struct soap* soap, const Type& type, void* record) {
  unsigned long seen = 0;
  std::size_t next = 0;
  while (soap->body) {
    if (peekElement(soap))
      break;
    const Row* const row = soap->other ? nullptr : findRow(soap, type, seen, next);
    if (soap->error)
      break;
    if (readChild(soap, row, record))
      return soap->error;
    soap->body = 1;
    if (!row || row->occurs == Occurs::Repeated)
      continue;
    next = static_cast<std::size_t>(row - type.rows);
    seen |= 1UL << next++;
  }
  if (soap->error && soap->error != SOAP_NO_TAG)
    return soap->error;
  soap->error = SOAP_OK;
  if (soap->mode & SOAP_XML_STRICT)
    for (std::size_t i = 0; i < type.rowCount; ++i)
      if (!(seen >> i & 1) &&
          (type.rows[i].occurs == Occurs::Required || type.rows[i].occurs == Occurs::RequiredNillable))
        return soap->error = SOAP_OCCURS;
  return SOAP_OK;
}

void* readElement(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  const bool pointer = type.codec->characters || value == nullptr;
  return beginElement(soap, tag, pointer) ? nullptr : readElementAfterTag(soap, tag, value, name, type);
}

void* readPointer(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type) {
  return beginElement(soap, tag, true) ? nullptr : readPointerAfterTag(soap, tag, slot, name, type);
}

void* readIndependent(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  value = readElement(soap, tag, value, name, type);
  return value && readFollowing(soap) ? nullptr : value;
}

void* readAnyElement(struct soap* soap, const char* tag, int* number) {
  if (peekElement(soap))
    return nullptr;
  if (!*soap->id || !(*number = soap_lookup_type(soap, soap->id)))
    *number = soap_lookup_type(soap, soap->href);
  const Type* type = findType(*number);
  const char* const name = type ? type->name : nullptr;
  if (!type)
    type = findTypeNamed(soap, *soap->type ? soap->type : soap->tag, soap->tag);
  if (!type) {
    soap->error = SOAP_TAG_MISMATCH;
    return nullptr;
  }
  *number = type->number;
  void* const value = readElement(soap, type->message ? nullptr : tag, nullptr, name, *type);
  return value && type->codec->characters ? *static_cast<char**>(value) : value;
}

int readFollowing(struct soap* soap) {
  const bool isWholeDocument = soap->level == 0;
  while (!peekElement(soap) && !skipUnknown(soap))
    continue;
  if (soap->error == SOAP_NO_TAG || (isWholeDocument && soap->error == SOAP_CHK_EOF))
    soap->error = SOAP_OK;
  return soap->error;
}

} // namespace tarnwell
