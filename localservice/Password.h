// Passwords as the store keeps them: salted SHA-512 in the form of crypt(5). Any thread.
#pragma once

#include <string>

namespace localservice {

/// Throws std::runtime_error for a password that cannot be hashed (over 512 bytes).
std::string hashPassword(const std::string& password);
bool passwordMatches(const std::string& password, const char* hash);

} // namespace localservice
