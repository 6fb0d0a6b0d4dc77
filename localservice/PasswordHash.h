// Hashes and checks passwords: salted, with the method and cost that crypt(3) prefers. Any thread. Only one hash is
// computed at a time, because each takes 16 MiB of memory.
#pragma once

#include <string>

namespace localservice {

/// Throws std::runtime_error for a password of more than 511 bytes, which crypt(3) does not hash.
std::string hashPassword(const std::string& password);
/// False also for a password that cannot be hashed.
bool passwordMatches(const std::string& password, const std::string& hash);

/// A hash that no password matches. Comparing with it takes as long as with the hash of an account.
const std::string& unmatchedHash();

} // namespace localservice
