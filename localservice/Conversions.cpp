#include "localservice/Conversions.h"

#include "protocol/binding/Text.h"

#include <cstring>

namespace localservice {

namespace {

/// Calls `convert` with every value that a save takes over and a response returns: the row's and the message's.
template <class Row, class Message, class Convert> void forValues(Row& map, Message& info, Convert convert) {
  convert(map.name, info.MapName);
  convert(map.author, info.Author);
  convert(map.description, info.Description);
  convert(map.formatType, info.Format_Type);
  convert(map.formatVersion, info.Format_Version);
  convert(map.formatHeader, info.Format_Header);
  convert(map.lastModified, info.LastModified);
  convert(map.isPublished, info.IsPublished);
  convert(map.allowInclusion, info.AllowInclusion);
  convert(map.isTwlx, info.Format_IsTwlx);
  convert(map.thumbnail, info.Thumbnail);
  convert(map.preview, info.Preview);
  convert(map.backup, info.OldTwlxBackUp);
  convert(map.content, info.MapContent);
}

/// Sets the value of a row or of a message to `from`.
struct Assign {
  template <class T> void operator()(T& to, const T& from) const { to = from; }
  void operator()(const char*& to, const std::wstring* from) const { to = utf8(soap, from); }
  void operator()(Bytes& to, const xsd__base64Binary* from) const { to = bytesOf(from); }
  void operator()(std::wstring*& to, const char* from) const { to = wide(soap, from); }
  void operator()(xsd__base64Binary*& to, Bytes from) const;
  struct soap* soap;
};

void Assign::operator()(xsd__base64Binary*& to, Bytes from) const {
  if (!from.data)
    return;
  to = create<xsd__base64Binary>(soap);
  if (from.size == 0)
    return;
  to->__ptr = static_cast<unsigned char*>(soap_malloc(soap, from.size));
  if (!to->__ptr)
    throw std::bad_alloc();
  std::memcpy(to->__ptr, from.data, from.size);
  to->__size = static_cast<int>(from.size);
}

} // namespace

const char* utf8(struct soap* soap, const std::wstring* text) {
  if (!text)
    return nullptr;
  const char* const copy = soap_wchar2s(soap, text->c_str());
  if (!copy)
    throw std::bad_alloc();
  return copy;
}

Bytes bytesOf(const xsd__base64Binary* block) {
  if (!block)
    return {};
  const auto size = static_cast<std::size_t>(block->__size);
  return {size != 0 ? static_cast<const void*>(block->__ptr) : "", size};
}

MapRecord recordOf(struct soap* soap, const dsns__DesktopInfoClass& info) {
  MapRecord map;
  map.id = info.MapId;
  forValues(map, info, [assign = Assign{soap}](auto& row, const auto& message) { assign(row, message); });
  return map;
}

std::wstring* wide(struct soap* soap, const char* text) {
  if (!text)
    return nullptr;
  auto* const copy = create<std::wstring>(soap);
  tarnwell::decodeUtf8(text, *copy);
  return copy;
}

dsns__DesktopInfoClass* infoOf(struct soap* soap, const MapRecord& map) {
  auto* const info = create<dsns__DesktopInfoClass>(soap);
  info->MapId = soap_strdup(soap, map.id);
  info->Created = map.created;
  info->Version = static_cast<float>(map.version);
  forValues(map, *info, [assign = Assign{soap}](const auto& row, auto& message) { assign(message, row); });
  for (std::wstring** const expected : {&info->MapName, &info->Author, &info->Description})
    if (!*expected)
      *expected = create<std::wstring>(soap);
  return info;
}

} // namespace localservice
