// Map identifiers in the stored form: 36 characters, lower case, without braces. Any thread.
#pragma once

#include <string>

namespace localservice {

/// The stored form of `text`, which may have braces and upper case. Empty when `text` is null, is the null identifier
/// or has another form.
std::string canonicalIdentifier(const char* text);

/// A new random identifier (RFC 4122 version 4).
std::string freshIdentifier();

} // namespace localservice
