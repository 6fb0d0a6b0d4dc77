// Passwords as the store keeps them: salted, hashed by the method and at the cost that crypt(3) prefers. Any thread;
// one hash at a time is computed, since each takes 16 MiB of memory.
#pragma once

#include <string>

namespace localservice {

/// Throws std::runtime_error for a password that cannot be hashed (over 512 bytes).
std::string hashPassword(const std::string& password);
bool passwordMatches(const std::string& password, const std::string& hash);

/// A hash that no password matches. Comparing with it takes as long as comparing with an account's.
const std::string& unmatchedHash();

} // namespace localservice
