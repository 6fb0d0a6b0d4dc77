// The built-in types of XML Schema (XML Schema Part 2) that the binding reads and writes: how they are held in memory,
// and their numbers.
#pragma once

#include <ctime>
#include <string>

using xsd__byte = char;
using xsd__unsignedByte = unsigned char;
using xsd__int = int;
using xsd__unsignedInt = unsigned int;
using xsd__float = float;
using xsd__boolean = bool;
/// Seconds since 1970-01-01T00:00:00 UTC.
using xsd__dateTime = std::time_t;
static_assert(sizeof(xsd__dateTime) == 8,
              "dates beyond 2038; in 32-bit programs with -D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64");
/// One unit per Unicode code point.
using xsd__string = std::wstring;
/// NUL-terminated; prefixes are those of the namespace table, other namespaces stand as "\"URI\":name".
using xsd__QName = char*;

/// What soap_type() returns and the runtime keeps beside an object: the type's place in the type table. Those of the
/// envelope (Envelope.h) and of the schema (TypeNumbers.h) follow.
enum {
  SOAP_TYPE_unknown = 0,
  SOAP_TYPE_xsd__byte,
  SOAP_TYPE_xsd__unsignedByte,
  SOAP_TYPE_xsd__int,
  SOAP_TYPE_xsd__unsignedInt,
  SOAP_TYPE_xsd__float,
  SOAP_TYPE_xsd__boolean,
  SOAP_TYPE_xsd__dateTime,
  SOAP_TYPE_xsd__string,
  SOAP_TYPE_xsd__QName,
  SOAP_TYPE_string, ///< "xsd:string" held as characters
  SOAP_TYPE_xsd__base64Binary,
  SOAP_TYPE_afterBuiltin
};

namespace tarnwell {

/// The number of the type that is held as `T` in memory.
template <class T> inline constexpr int typeNumber = T::number;
template <> inline constexpr int typeNumber<xsd__byte> = SOAP_TYPE_xsd__byte;
template <> inline constexpr int typeNumber<xsd__unsignedByte> = SOAP_TYPE_xsd__unsignedByte;
template <> inline constexpr int typeNumber<xsd__int> = SOAP_TYPE_xsd__int;
template <> inline constexpr int typeNumber<xsd__unsignedInt> = SOAP_TYPE_xsd__unsignedInt;
template <> inline constexpr int typeNumber<xsd__float> = SOAP_TYPE_xsd__float;
template <> inline constexpr int typeNumber<xsd__boolean> = SOAP_TYPE_xsd__boolean;
template <> inline constexpr int typeNumber<xsd__dateTime> = SOAP_TYPE_xsd__dateTime;
template <> inline constexpr int typeNumber<xsd__string> = SOAP_TYPE_xsd__string;

} // namespace tarnwell
