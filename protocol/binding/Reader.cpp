#include "protocol/binding/Reader.h"

#include "protocol/binding/Receiver.h"
#include "protocol/binding/Text.h"
#include "protocol/runtime/RuntimeInternals.h"

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

/// One element: takes its start tag (`start`; null: any), lets `readContent` read what follows, takes its end tag.
template <class ReadContent>
bool readTagged(struct soap* soap, const char* start, bool isNillable, const char* tag, ReadContent readContent) {
  if (takeElement(soap, start, isNillable))
    return false;
  Receiver* const receiver = receiverOf(soap);
  if (receiver && (*soap->id || *soap->href))
    receiver->hasReferences = true;
  const bool hasEndTag = soap->body != 0;
  return readContent() && (!hasEndTag || !endElement(soap, tag));
}

/// Registers `value` under its element's id for references to it.
bool enterId(struct soap* soap, void* value, const Type& type) {
  const std::string id = soap->id; // the runtime copies it into the context again
  return soap_id_enter(soap, id.c_str(), value, type.number, type.size, nullptr, nullptr, nullptr, nullptr) != nullptr;
}

// Each of these reads what follows a start tag. False: it failed, with the context's error set.

/// Characters, to which `characters` then points; nil leaves it as it is.
bool readCharacters(struct soap* soap, char** characters, const Type& type) {
  if (*soap->href == '#')
    return soap_id_lookup(soap, soap->href, reinterpret_cast<void**>(characters), type.number, type.size, 0, nullptr);
  return soap->null || (!type.codec->read(soap, type, characters) && (!*soap->id || enterId(soap, *characters, type)));
}

/// The value of `type`; nil leaves it as it is.
bool readValue(struct soap* soap, void* value, const char* name, const Type& type) {
  if (!typeFits(soap, name, type)) {
    soap->error = SOAP_TYPE;
    return false;
  }
  if (type.codec->characters)
    return readCharacters(soap, static_cast<char**>(value), type);
  if (*soap->href == '#') // of records, which are few, the runtime copies the members when all others are resolved
    return soap_id_forward(soap, soap->href, value, 0, type.number, type.number, type.size, type.rows ? 0 : 1,
                           type.rows ? resolve : resolveValue, nullptr);
  if (*soap->id && !enterId(soap, value, type))
    return false;
  return soap->null || !type.codec->read(soap, type, value);
}

/// A value in a new object, to which `pointer` then points; nil makes it null.
bool readTarget(struct soap* soap, void** pointer, const char* name, const Type& type) {
  *pointer = nullptr;
  if (*soap->href == '#')
    return soap_id_lookup(soap, soap->href, pointer, type.number, type.size, 0, nullptr);
  if (soap->null)
    return true;
  void* const value = instantiate(soap, -1, type, nullptr);
  if (!value || !readValue(soap, value, name, type))
    return false;
  *pointer = value;
  return true;
}

/// One entry of a list; one given by reference takes its place in the list when the reference is resolved. The receiver
/// is offered only what nothing refers to, and where no attachment is stored later.
bool readEntry(struct soap* soap, const ListAccess& access, void* list, const Type& type) {
  void* entry = nullptr;
  const ContextMark before{soap};
  const bool isRead = *soap->href != '#' ? readTarget(soap, &entry, nullptr, type)
                                         : soap_id_forward(soap, soap->href, list, access.size(list), type.number,
                                                           type.number, type.size, 1, access.place, nullptr) != nullptr;
  Receiver* const receiver = entry ? receiverOf(soap) : nullptr;
  if (isRead && receiver && !receiver->hasReferences && !soap->xlist && receiver->takeEntry(type, entry))
    before.releaseLater();
  else if (isRead)
    access.append(list, entry);
  return isRead;
}

/// Reads the element peeked at, which is that of `row`.
int readMember(struct soap* soap, const Row& row, void* record) {
  void* const member = row.member(record);
  const Type& type = typeOf(row.type);
  const auto readContent = [&] {
    if (row.list)
      return readEntry(soap, *row.list, member, type);
    if (row.occurs == Occurs::Optional && !type.codec->characters)
      return readTarget(soap, static_cast<void**>(member), type.name, type);
    return readValue(soap, member, type.name, type);
  };
  const bool isNillable = row.occurs != Occurs::Required || type.codec->characters;
  return readTagged(soap, nullptr, isNillable, row.tag, readContent) ? SOAP_OK : soap->error;
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

int skipUnknown(struct soap* soap, bool independent) {
  if (peekElement(soap))
    return soap->error;
  if (soap->mustUnderstand && !soap->other)
    return soap->error = SOAP_MUSTUNDERSTAND;
  const bool isStrict = (soap->mode & SOAP_XML_STRICT) != 0;
  if ((isStrict && !independent) || soap_match_tag(soap, soap->tag, "SOAP-ENV:") == SOAP_OK)
    return soap->error = SOAP_TAG_MISMATCH;
  soap->error = SOAP_OK; // an undeclared prefix left one
  if (*soap->id && *soap->href != '#' && soap->level < maximumDepth) {
    const unsigned level = soap->level;
    int number = 0;
    readAnyElement(soap, nullptr, &number);
    if (soap->error != SOAP_TAG_MISMATCH || soap->level != level)
      return soap->error;
  }
  return isStrict ? soap->error = SOAP_TAG_MISMATCH : skipElement(soap);
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
  const bool isRead = readTagged(soap, tag, type.codec->characters || !value, tag, [&] {
    value = value ? value : instantiate(soap, -1, type, nullptr);
    return value && readValue(soap, value, name, type);
  });
  return isRead ? value : nullptr;
}

void* readPointer(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type) {
  const bool isRead = readTagged(soap, tag, true, tag, [&] {
    slot = slot ? slot : soap_malloc(soap, sizeof(void*));
    return slot && readTarget(soap, static_cast<void**>(slot), name, type);
  });
  return isRead ? slot : nullptr;
}

void* readIndependent(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  value = readElement(soap, tag, value, name, type);
  return value && readFollowing(soap) ? nullptr : value;
}

void* readAnyElement(struct soap* soap, const char* tag, int* number) {
  if (peekElement(soap))
    return nullptr;
  *number = *soap->id ? soap_lookup_type(soap, soap->id) : 0;
  if (*number == 0)
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
  while (!peekElement(soap) && !skipUnknown(soap, true))
    continue;
  if (soap->error == SOAP_NO_TAG || (isWholeDocument && soap->error == SOAP_CHK_EOF))
    soap->error = SOAP_OK;
  return soap->error;
}

} // namespace tarnwell
