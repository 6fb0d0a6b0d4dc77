// How the values of each kind of type are read and written between their tags. A type table names
// them.
#pragma once

#include "protocol/binding/Type.h"

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
/// Stores the value of a text in `value`, of an int's size: a name's, or a decimal number unchecked (in strict mode
/// only a named value). Returns 0, or SOAP_TYPE for any other text and for null, also set in the context.
int enumerationValue(struct soap* soap, const Type& type, const char* text, void* value);

} // namespace tarnwell
