#include "protocol/binding/Codecs.h"

#include "protocol/binding/DateTime.h"
#include "protocol/binding/Reader.h"
#include "protocol/binding/Text.h"
#include "protocol/binding/Writer.h"
#include "protocol/runtime/RuntimeInternals.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tarnwell {
namespace {

/// Reads a simple value: `parse` gets its text without the white space around it. An empty one keeps the default,
/// except in strict mode.
template <class T, int (*parse)(struct soap*, const Type&, std::string_view, T*)>
int readSimple(struct soap* soap, const Type& type, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  const std::string_view text = content.trimmed();
  if (text.find('\0') != text.npos) // some parsers would stop there
    return soap->error = SOAP_TYPE;
  if (!text.empty())
    return parse(soap, type, text, static_cast<T*>(value));
  return soap->error = soap->mode & SOAP_XML_STRICT ? SOAP_EMPTY : SOAP_OK;
}

template <class T, const char* (*format)(struct soap*, T)>
int writeSimple(struct soap* soap, const Type&, const void* value) {
  return soap_send(soap, format(soap, *static_cast<const T*>(value)));
}

template <class Integer, int (*convert)(struct soap*, const char*, Integer*)>
int parseInteger(struct soap* soap, const Type&, std::string_view text, Integer* value) {
  return convert(soap, std::string(text).c_str(), value);
}

/// What scanf's "%g" takes, with a point in every locale: the number ends at the first character that does not fit.
int parseFloat(struct soap* soap, const Type&, std::string_view text, float* value) {
  const char* const last = text.data() + text.size();
  if (const auto [to, failure] = std::from_chars(text.data(), last, *value); failure == std::errc() && to == last)
    return SOAP_OK; // most numbers, in a third of the time of strtof
  const std::string digits(text);
  char* end = nullptr;
  *value = strtof_l(digits.c_str(), &end, SOAP_LOCALE(soap));
  return soap->error = end == digits.c_str() ? SOAP_TYPE : SOAP_OK;
}

int parseBoolean(struct soap* soap, const Type&, std::string_view text, bool* value) {
  int number = text == "true" ? 1 : 0;
  if (number == 0 && text != "false" && soap_s2int(soap, std::string(text).c_str(), &number))
    return soap->error;
  if (number != 0 && number != 1)
    return soap->error = SOAP_TYPE;
  *value = number == 1;
  return SOAP_OK;
}

/// With its sign also where char has none.
const char* formatByte(struct soap* soap, char value) { return soap_int2s(soap, static_cast<signed char>(value)); }

const char* formatBoolean(struct soap*, bool value) { return value ? "true" : "false"; }

int parseTime(struct soap* soap, const Type&, std::string_view text, std::time_t* value) {
  return soap->error = parseDateTime(text, *value) ? SOAP_OK : SOAP_TYPE;
}

int parseEnumeration(struct soap* soap, const Type& type, std::string_view text, void* value) {
  return enumerationValue(soap, type, std::string(text).c_str(), value);
}

int writeEnumeration(struct soap* soap, const Type& type, const void* value) {
  return soap_send(soap, enumerationText(soap, type, *static_cast<const int*>(value)));
}

int readWideText(struct soap* soap, const Type&, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  decodeUtf8(content.text(), *static_cast<std::wstring*>(value));
  return SOAP_OK;
}

int writeWideText(struct soap* soap, const Type&, const void* value) {
  return writeText(soap, *static_cast<const std::wstring*>(value));
}

int readCharacters(struct soap* soap, const Type&, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  const std::string_view text = content.text();
  char* const copy = static_cast<char*>(soap_malloc(soap, text.size() + 1));
  if (!copy)
    return soap->error;
  copy[text.copy(copy, text.size())] = '\0'; // unlike memcpy, takes an empty view without data
  *static_cast<char**>(value) = copy;
  return SOAP_OK;
}

int writeCharacters(struct soap* soap, const Type&, const void* value) {
  const char* const text = *static_cast<const char* const*>(value);
  return text ? writeText(soap, std::string_view(text)) : SOAP_OK;
}

/// The prefix becomes that of the namespace table, while the answer's own declarations are still in force.
int readQualifiedName(struct soap* soap, const Type&, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  const std::string text(content.trimmed());
  if (std::any_of(text.begin(), text.end(), isBlank)) // a list, in which the runtime repeats each name's namespace
    return soap->error = SOAP_TYPE;
  return soap_s2QName(soap, text.c_str(), static_cast<char**>(value), 0, -1, nullptr);
}

int writeQualifiedName(struct soap* soap, const Type&, const void* value) {
  const char* const text = soap_QName2s(soap, *static_cast<const char* const*>(value));
  return text ? writeText(soap, std::string_view(text)) : soap->error;
}

/// A name of a namespace outside the table gets a prefix, which has to be declared on the element itself: before its
/// start tag is written.
bool declarePrefix(struct soap* soap, const Type& type, const void* value, const char*, int& id, const char*) {
  const char* const name = *static_cast<const char* const*>(value);
  id = soap_embedded_id(soap, id, value, type.number);
  return !name || soap_QName2s(soap, name);
}

template <class Integer, int (*convert)(struct soap*, const char*, Integer*),
          const char* (*format)(struct soap*, Integer)>
constexpr Codec integerCodec = {readSimple<Integer, parseInteger<Integer, convert>>, writeSimple<Integer, format>};

} // namespace

constexpr Codec byteCodec = integerCodec<char, soap_s2byte, formatByte>;
constexpr Codec unsignedByteCodec = integerCodec<unsigned char, soap_s2unsignedByte, soap_unsignedByte2s>;
constexpr Codec intCodec = integerCodec<int, soap_s2int, soap_int2s>;
constexpr Codec unsignedIntCodec = integerCodec<unsigned, soap_s2unsignedInt, soap_unsignedInt2s>;
constexpr Codec floatCodec = {readSimple<float, parseFloat>, writeSimple<float, soap_float2s>};
constexpr Codec booleanCodec = {readSimple<bool, parseBoolean>, writeSimple<bool, formatBoolean>};
constexpr Codec dateTimeCodec = {readSimple<std::time_t, parseTime>, writeSimple<std::time_t, soap_dateTime2s>};
constexpr Codec enumerationCodec = {readSimple<void, parseEnumeration>, writeEnumeration};
constexpr Codec wideTextCodec = {readWideText, writeWideText};
constexpr Codec charactersCodec = {readCharacters, writeCharacters, true};
constexpr Codec qualifiedNameCodec = {readQualifiedName, writeQualifiedName, true, nullptr, declarePrefix};
constexpr Codec recordCodec = {readRecord, writeRecord};

const char* enumerationText(struct soap* soap, const Type& type, int value) {
  for (std::size_t i = 0; i < type.nameCount; ++i)
    if (type.names[i].value == value)
      return type.names[i].text;
  return soap_int2s(soap, value);
}

int enumerationValue(struct soap* soap, const Type& type, const char* text, void* value) {
  if (!text)
    return soap->error = SOAP_TYPE;
  const Enumerator* const end = type.names + type.nameCount;
  const Enumerator* const named =
      std::find_if(type.names, end, [text](const Enumerator& name) { return std::strcmp(name.text, text) == 0; });
  int number = 0;
  if (named != end)
    number = named->value;
  else if (soap_s2int(soap, text, &number))
    return soap->error;
  // The values are those from 0 on.
  if (soap->mode & SOAP_XML_STRICT && (number < 0 || number >= static_cast<int>(type.nameCount)))
    return soap->error = SOAP_TYPE;
  std::memcpy(value, &number, sizeof number);
  return SOAP_OK;
}

} // namespace tarnwell
