#include "localservice/PasswordHash.h"

#include <crypt.h>
#include <memory>
#include <mutex>
#include <stdexcept>

namespace localservice {

namespace {

/// The hash of `password` with the method, cost and salt of `setting`; null: the preferred ones and a new salt. Empty
/// when it cannot be computed.
std::string computeHash(const std::string& password, const char* setting) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  const auto work = std::make_unique<crypt_data>();
  char fresh[CRYPT_GENSALT_OUTPUT_SIZE];
  if (!setting)
    setting = crypt_gensalt_rn(nullptr, 0, nullptr, 0, fresh, sizeof fresh);
  const char* const hash = setting ? crypt_rn(password.c_str(), setting, work.get(), sizeof *work) : nullptr;
  return hash ? hash : "";
}

} // namespace

std::string hashPassword(const std::string& password) {
  std::string hash = computeHash(password, nullptr);
  if (hash.empty())
    throw std::runtime_error("the password cannot be hashed; it may have at most 511 bytes");
  return hash;
}

bool passwordMatches(const std::string& password, const std::string& hash) {
  const std::string computed = computeHash(password, hash.c_str());
  return !computed.empty() && computed == hash;
}

const std::string& unmatchedHash() {
  // No hash ends with "z", because the unused bits of its last character are 0.
  static const std::string hash = [] {
    std::string text = hashPassword("");
    text.back() = 'z';
    return text;
  }();
  return hash;
}

} // namespace localservice
