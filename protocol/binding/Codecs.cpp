#include "protocol/binding/Codecs.h"

#include "protocol/binding/DateTime.h"
#include "protocol/binding/Reader.h"
#include "protocol/binding/Text.h"
#include "protocol/binding/Writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace tarnwell {
namespace {

/// A short value as text, with room for every number and time.
using Short = char[64];

/// Reads a simple value: blanks around it do not count; an empty one keeps the default, except in strict mode.
template <int (*parse)(struct soap*, const Type&, std::string_view, void*)>
int readSimple(struct soap* soap, const Type& type, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  const std::string_view text = content.trimmed();
  if (!text.empty())
    return parse(soap, type, text, value);
  return soap->error = soap->mode & SOAP_XML_STRICT ? SOAP_EMPTY : SOAP_OK;
}

template <const char* (*format)(struct soap*, const Type&, const void*, Short&)>
int writeSimple(struct soap* soap, const Type& type, const void* value) {
  Short buffer;
  return soap_send(soap, format(soap, type, value, buffer));
}

/// A decimal number of the range of `Number`, with an optional sign and nothing after it.
template <class Number> int parseNumber(struct soap* soap, std::string_view text, Number& number) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-')
    text.remove_prefix(1);
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  return soap->error = failure == std::errc() && end == text.data() + text.size() ? SOAP_OK : SOAP_TYPE;
}

template <class Integer, class Wide>
int parseInteger(struct soap* soap, const Type&, std::string_view text, void* value) {
  Wide number = 0;
  if (parseNumber(soap, text, number))
    return soap->error;
  if (number < std::numeric_limits<Integer>::min() || number > std::numeric_limits<Integer>::max())
    return soap->error = SOAP_TYPE;
  *static_cast<Integer*>(value) = static_cast<Integer>(number);
  return SOAP_OK;
}

template <class Integer, class Wide>
const char* formatInteger(struct soap*, const Type&, const void* value, Short& buffer) {
  *std::to_chars(buffer, buffer + sizeof buffer, static_cast<Wide>(*static_cast<const Integer*>(value))).ptr = '\0';
  return buffer;
}

template <class Integer, class Wide> constexpr Codec integerCodec() {
  return {readSimple<parseInteger<Integer, Wide>>, writeSimple<formatInteger<Integer, Wide>>, false};
}

/// Whether a decimal number that no float holds is too large, and not too small: by the power of ten of its first digit
/// that is not 0.
bool isLarge(std::string_view number) {
  const std::size_t end = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, end);
  const auto point = static_cast<long>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<long>(digits.find_first_of("123456789"));
  std::string_view exponent = number.substr(std::min(end + 1, number.size()));
  if (exponent.substr(0, 1) == "+")
    exponent.remove_prefix(1);
  long power = 0;
  if (std::from_chars(exponent.data(), exponent.data() + exponent.size(), power).ec == std::errc::result_out_of_range)
    return exponent[0] != '-';
  return power > first - point;
}

/// "INF", "+INF", "-INF", "NaN", or what scanf's "%g" takes, which stops at the first character that does not fit.
int parseFloat(struct soap* soap, const Type&, std::string_view text, void* value) {
  float& number = *static_cast<float*>(value);
  if (text == "NaN") {
    number = std::numeric_limits<float>::quiet_NaN();
    return SOAP_OK;
  }
  if (text[0] == '+' && text.substr(1, 1) != "-")
    text.remove_prefix(1);
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure == std::errc::invalid_argument)
    return soap->error = SOAP_TYPE;
  if (failure == std::errc::result_out_of_range) { // what rounding makes of it
    const bool isNegative = text[0] == '-';
    const auto size = static_cast<std::size_t>(end - text.data());
    const bool large = isLarge(text.substr(isNegative, size - isNegative));
    number = std::copysign(large ? std::numeric_limits<float>::infinity() : 0.0F, isNegative ? -1.0F : 1.0F);
  }
  return SOAP_OK;
}

/// "%.9G" in every locale: enough digits to read the same value again.
const char* formatFloat(struct soap*, const Type&, const void* value, Short& buffer) {
  const float number = *static_cast<const float*>(value);
  if (!std::isfinite(number))
    return std::isnan(number) ? "NaN" : number < 0 ? "-INF" : "INF";
  char* const end = std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, 9).ptr;
  *end = '\0';
  if (char* const exponent = std::strchr(buffer, 'e'))
    *exponent = 'E';
  return buffer;
}

int parseBoolean(struct soap* soap, const Type& type, std::string_view text, void* value) {
  bool& flag = *static_cast<bool*>(value);
  int number = text == "true" ? 1 : 0;
  if (number == 0 && text != "false" && parseInteger<int, int>(soap, type, text, &number))
    return soap->error;
  if (number != 0 && number != 1)
    return soap->error = SOAP_TYPE;
  flag = number == 1;
  return SOAP_OK;
}

const char* formatBoolean(struct soap*, const Type&, const void* value, Short&) {
  return *static_cast<const bool*>(value) ? "true" : "false";
}

int parseTime(struct soap* soap, const Type&, std::string_view text, void* value) {
  return soap->error = parseDateTime(text, *static_cast<std::time_t*>(value)) ? SOAP_OK : SOAP_TYPE;
}

int writeTime(struct soap* soap, const Type&, const void* value) {
  char buffer[dateTimeSize];
  return soap_send(soap, formatDateTime(*static_cast<const std::time_t*>(value), buffer));
}

int parseEnumeration(struct soap* soap, const Type& type, std::string_view text, void* value) {
  return enumerationValue(soap, type, text, *static_cast<int*>(value));
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

char* copyCharacters(struct soap* soap, std::string_view text) {
  char* const copy = static_cast<char*>(soap_malloc(soap, text.size() + 1));
  if (copy)
    copy[text.copy(copy, text.size())] = '\0'; // unlike memcpy, takes an empty view without data
  return copy;
}

int readCharacters(struct soap* soap, const Type&, void* value) {
  Content content;
  if (content.read(soap))
    return soap->error;
  char* const copy = copyCharacters(soap, content.text());
  *static_cast<char**>(value) = copy;
  return copy ? SOAP_OK : soap->error;
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

} // namespace

constexpr Codec byteCodec = integerCodec<char, int>();
constexpr Codec unsignedByteCodec = integerCodec<unsigned char, unsigned>();
constexpr Codec intCodec = integerCodec<int, int>();
constexpr Codec unsignedIntCodec = integerCodec<unsigned, unsigned>();
constexpr Codec floatCodec = {readSimple<parseFloat>, writeSimple<formatFloat>, false};
constexpr Codec booleanCodec = {readSimple<parseBoolean>, writeSimple<formatBoolean>, false};
constexpr Codec dateTimeCodec = {readSimple<parseTime>, writeTime, false};
constexpr Codec enumerationCodec = {readSimple<parseEnumeration>, writeEnumeration, false};
constexpr Codec wideTextCodec = {readWideText, writeWideText, false};
constexpr Codec charactersCodec = {readCharacters, writeCharacters, true};
constexpr Codec qualifiedNameCodec = {readQualifiedName, writeQualifiedName, true, nullptr, declarePrefix};
constexpr Codec recordCodec = {readRecord, writeRecord, false};

const char* enumerationText(struct soap* soap, const Type& type, int value) {
  for (std::size_t i = 0; i < type.nameCount; ++i)
    if (type.names[i].value == value)
      return type.names[i].text;
  return soap_int2s(soap, value);
}

int enumerationValue(struct soap* soap, const Type& type, std::string_view text, int& value) {
  for (std::size_t i = 0; i < type.nameCount; ++i) {
    if (text == type.names[i].text) {
      value = type.names[i].value;
      return SOAP_OK;
    }
  }
  int number = 0;
  if (parseNumber(soap, text, number))
    return soap->error;
  // The values are those from 0 on.
  if (soap->mode & SOAP_XML_STRICT && (number < 0 || number >= static_cast<int>(type.nameCount)))
    return soap->error = SOAP_TYPE;
  value = number;
  return SOAP_OK;
}

} // namespace tarnwell
