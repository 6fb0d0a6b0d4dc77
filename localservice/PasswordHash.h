// Hashes and checks passwords: salted, with the method and cost that crypt(3) prefers, some 20 ms of CPU and 16 MiB of
// memory. Any thread.
#pragma once

#include <string>

namespace localservice {

/// Throws std::runtime_error for a password of more than 511 bytes, which crypt(3) does not hash.
std::string hashPassword(const std::string& password);

/// Whether `password` is that of account `name`, whose stored hash is `hash`. False also for a password that cannot be
/// hashed. A password that has matched before in this process is not hashed again. One that does not match takes the
/// time of a hash, and waits while another password of the same name, or one per core, is hashed.
bool passwordMatches(const std::string& name, const std::string& password, const std::string& hash);

/// A hash that no password matches. Comparing with it takes as long as with the hash of an account.
const std::string& unmatchedHash();

} // namespace localservice
