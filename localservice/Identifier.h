// Map identifiers as the store keeps them: 36 characters, lower case, without braces. Any thread.
#pragma once

#include <string>

namespace localservice {

/// The stored form of `text` (null allowed), which may have braces and upper case. Empty for everything that
/// identifies no map: absent, the null identifier, other forms.
std::string canonicalIdentifier(const char* text);

/// A new random identifier (RFC 4122 version 4).
std::string freshIdentifier();

} // namespace localservice
