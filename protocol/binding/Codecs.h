// How the values of each kind of type are read and written between their tags. The type table (Types.cpp) names them.
#pragma once

#include "protocol/binding/Type.h"

#include <string_view>

namespace tarnwell {

extern const Codec byteCodec;
extern const Codec unsignedByteCodec;
extern const Codec intCodec;
extern const Codec unsignedIntCodec;
extern const Codec floatCodec;
extern const Codec booleanCodec;
extern const Codec dateTimeCodec;
extern const Codec enumerationCodec;
extern const Codec wideTextCodec;
extern const Codec charactersCodec;
extern const Codec qualifiedNameCodec;
extern const Codec recordCodec;

/// The text of an enumeration's value: its name, or the decimal number of a value without one.
const char* enumerationText(struct soap* soap, const Type& type, int value);
/// The value of a text: a name's, or a decimal number unchecked (in strict mode only a named value). Returns 0 or
/// SOAP_TYPE, also set in the context.
int enumerationValue(struct soap* soap, const Type& type, std::string_view text, int& value);

} // namespace tarnwell
