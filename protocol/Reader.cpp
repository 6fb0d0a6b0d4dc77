#include "protocol/Reader.h"

#include "protocol/Block.h"
#include "protocol/Callbacks.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace tarnwell {
namespace {

/// Whether the element peeked at, with the local name `local`, is that of `row`. Mostly it has no prefix and the
/// innermost declaration is the default namespace's: then the runtime, which searches, is not asked.
bool matches(struct soap* soap, const char* local, const Row& row) {
  if (std::strcmp(local, row.local) != 0)
    return false;
  const soap_nlist* const innermost = soap->nlist;
  if (local == soap->tag && row.local != row.tag && innermost && !*innermost->id && innermost->index >= 0) {
    const auto size = static_cast<std::size_t>(row.local - row.tag - 1);
    const char* const prefix = soap->local_namespaces[innermost->index].id;
    if (prefix && std::strncmp(prefix, row.tag, size) == 0 && !prefix[size])
      return true;
  }
  return soap_match_tag(soap, soap->tag, row.tag) == SOAP_OK;
}

/// Of the rows not yet read, the one that the element peeked at belongs to; null if none. `next` is where to look
/// first, as elements mostly come in order.
const Row* findRow(struct soap* soap, const Type& type, unsigned long seen, std::size_t next) {
  const char* const local = localPart(soap->tag);
  for (std::size_t i = 0; i < type.rowCount; ++i) {
    const std::size_t at = next + i < type.rowCount ? next + i : next + i - type.rowCount;
    const Row& row = type.rows[at];
    if (*local == *row.local && !(seen >> at & 1) && matches(soap, local, row))
      return &row;
  }
  return nullptr;
}

/// Whether a start tag's name ends here: at a blank, "/" or ">", all of them below the letters.
bool endsName(char c) {
  constexpr std::uint64_t ends = ((2ULL << ' ') - 1) | 1ULL << '/' | 1ULL << '>';
  const unsigned code = static_cast<unsigned char>(c);
  return code < 64 && (ends >> code & 1) != 0;
}

/// Does what soap_peek_element does for a start tag without attributes, or an end tag, that is whole in the buffer:
/// most of an answer. False: it is something else, and nothing was done.
bool peekPlainTag(struct soap* soap) {
  const std::string_view next = unread(soap);
  const char* at = next.data();
  const char* const end = at + next.size();
  while (at < end && isBlank(*at))
    ++at;
  if (soap->ahead || soap->cdata || soap->feltbegin || soap->mode & SOAP_XML_DOM || end - at < 3 || *at++ != '<')
    return false;
  std::size_t size = 0;
  const std::size_t most = std::min<std::size_t>(static_cast<std::size_t>(end - at), sizeof soap->tag);
  const bool endTag = *at == '/';
  if (!endTag) {
    while (size < most && !endsName(at[size]))
      ++size;
    if (size == 0 || size == most || at[size] != '>' || *at == '!' || *at == '?' || *at == '%')
      return false;
    std::memcpy(soap->tag, at, size);
  }
  soap->tag[size] = '\0';
  soap->peeked = 1;
  soap->id[0] = soap->href[0] = soap->type[0] = '\0';
  soap->arrayType[0] = soap->arraySize[0] = soap->arrayOffset[0] = '\0';
  soap->other = soap->null = soap->mustUnderstand = 0;
  soap->position = 0;
  soap->root = -1;
  soap->bufidx = static_cast<std::size_t>(at + size + 1 - soap->buf);
  if (endTag) {
    soap->ahead = endTagMark;
    soap->error = SOAP_NO_TAG;
    return true;
  }
  soap_pop_namespace(soap);
  for (struct soap_attribute* attribute = soap->attributes; attribute; attribute = attribute->next)
    attribute->visible = 0;
  soap->body = 1;
  soap->error = SOAP_OK;
  return true;
}

/// Whether an xsi:type fits: it names the type itself or has one of the local parts that the type accepts besides.
bool typeFits(struct soap* soap, const char* name, const Type& type) {
  if (!*soap->type || !type.accepts || !name || !*name || soap_match_tag(soap, soap->type, name) == SOAP_OK)
    return true;
  const char* const local = localPart(soap->type);
  const std::size_t size = std::strlen(local);
  for (const char* at = type.accepts; *at == ':'; at += std::strcspn(at + 1, ":") + 1)
    if (std::strcspn(at + 1, ":") == size && std::memcmp(at + 1, local, size) == 0) {
      soap->error = SOAP_OK; // an undeclared prefix left one
      return true;
    }
  return false;
}

/// Registers `value` under its element's id for references to it.
bool enterId(struct soap* soap, void* value, const Type& type) {
  if (BlockMemory* const memory = blockMemory(soap))
    memory->hasReferences = true;
  const std::string id = soap->id; // the runtime copies it into the context again
  return soap_id_enter(soap, id.c_str(), value, type.number, type.size, nullptr, nullptr, nullptr, nullptr) != nullptr;
}

/// Reads what follows the start tag just taken into `value`.
void* readBegun(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  const bool open = soap->body != 0;
  if (!typeFits(soap, name, type)) {
    soap->error = SOAP_TYPE;
    return nullptr;
  }
  if (type.codec->characters) {
    char** const characters = static_cast<char**>(value);
    if (*soap->href == '#') {
      if (!soap_id_lookup(soap, soap->href, static_cast<void**>(value), type.number, type.size, 0, nullptr))
        return nullptr;
    } else if (!soap->null &&
               (type.codec->read(soap, type, value) || (*soap->id && !enterId(soap, *characters, type)))) {
      return nullptr;
    }
  } else {
    if (*soap->id && !enterId(soap, value, type))
      return nullptr;
    if (*soap->href == '#') {
      if (!soap_id_forward(soap, soap->href, value, 0, type.number, type.number, type.size, 0, resolve, nullptr))
        return nullptr;
    } else if (!soap->null && type.codec->read(soap, type, value)) {
      return nullptr;
    }
  }
  return open && endElement(soap, tag) ? nullptr : value;
}

/// Goes on after the start tag of readElement().
void* readElementBegun(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  if (!value && !(value = instantiate(soap, -1, type, nullptr)))
    return nullptr;
  return readBegun(soap, tag, value, name, type);
}

/// Goes on after the start tag of readPointer().
void* readPointerBegun(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type) {
  if (!slot && !(slot = soap_malloc(soap, sizeof(void*))))
    return nullptr;
  void** const pointer = static_cast<void**>(slot);
  *pointer = nullptr;
  if (soap->null || *soap->href == '#') {
    const bool open = soap->body != 0;
    if (*soap->href == '#' && !soap_id_lookup(soap, soap->href, pointer, type.number, type.size, 0, nullptr))
      return nullptr;
    return open && endElement(soap, tag) ? nullptr : slot;
  }
  void* const value = instantiate(soap, -1, type, nullptr);
  if (!value || !readBegun(soap, tag, value, name, type))
    return nullptr;
  *pointer = value;
  return slot;
}

/// Reads one entry of a list; one given by reference takes its place in the list when the reference is resolved.
int readEntry(struct soap* soap, const Row& row, void* list) {
  const Type& type = typeOf(row.type);
  void* entry = nullptr;
  if (*soap->href != '#') {
    if (!readPointerBegun(soap, row.tag, &entry, nullptr, type))
      return soap->error;
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
  if (beginElement(soap, nullptr, pointer || type.codec->characters || row.occurs == Occurs::Repeated))
    return soap->error;
  if (row.occurs == Occurs::Repeated)
    return readEntry(soap, row, member);
  const auto read = pointer ? readPointerBegun : readElementBegun;
  return read(soap, row.tag, member, type.name, type) ? SOAP_OK : soap->error;
}

} // namespace

int peekElement(struct soap* soap) {
  const bool again = soap->peeked != 0;
  if (!again && peekPlainTag(soap))
    return soap->error;
  if (soap_peek_element(soap) || again || *soap->href)
    return soap->error;
  for (const struct soap_attribute* attribute = soap->attributes; attribute; attribute = attribute->next)
    if (attribute->visible && attribute->value && std::strcmp(attribute->name, "href") == 0)
      std::snprintf(soap->href, sizeof soap->href, "%s", attribute->value);
  return SOAP_OK;
}

int beginElement(struct soap* soap, const char* tag, bool nillable) {
  return peekElement(soap) ? soap->error : soap_element_begin_in(soap, tag, nillable, nullptr);
}

int endElement(struct soap* soap, const char* tag) {
  const std::string_view next = unread(soap);
  const bool peekedAtEnd = soap->peeked && !*soap->tag && soap->ahead == endTagMark;
  if (soap->mode & (SOAP_XML_STRICT | SOAP_XML_DOM) || soap->feltendin || soap->cdata)
    return soap_element_end_in(soap, tag);
  if (peekedAtEnd) { // "</" was taken: the rest of the tag, whatever its name
    const std::size_t close = next.find('>');
    if (close == next.npos)
      return soap_element_end_in(soap, tag);
    soap->bufidx += close + 1;
    soap->peeked = 0;
    soap->ahead = 0;
    soap->error = SOAP_OK;
    --soap->level;
    return SOAP_OK;
  }
  // The very end tag of the start tag taken last, whole in the buffer: nothing for the runtime to find out.
  const std::size_t size = std::strlen(soap->tag);
  if (soap->error || soap->peeked || soap->ahead || next.size() < size + 3 || next[0] != '<' || next[1] != '/' ||
      next[size + 2] != '>' || next.compare(2, size, soap->tag, size) != 0)
    return soap_element_end_in(soap, tag);
  soap->bufidx += size + 3;
  --soap->level;
  return SOAP_OK;
}

int skipElement(struct soap* soap) {
  soap->peeked = 0;
  soap->error = SOAP_OK;
  return soap->body ? soap_ignore(soap) : SOAP_OK;
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
    if (!row                          ? soap_ignore_element(soap)
        : soap->level >= maximumDepth ? skipElement(soap)
                                      : readMember(soap, *row, record))
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
  return beginElement(soap, tag, pointer) ? nullptr : readElementBegun(soap, tag, value, name, type);
}

void* readPointer(struct soap* soap, const char* tag, void* slot, const char* name, const Type& type) {
  return beginElement(soap, tag, true) ? nullptr : readPointerBegun(soap, tag, slot, name, type);
}

void* readIndependent(struct soap* soap, const char* tag, void* value, const char* name, const Type& type) {
  value = readElement(soap, tag, value, name, type);
  return value && soap_getindependent(soap) ? nullptr : value;
}

} // namespace tarnwell
