#include "localservice/Password.h"

#include <crypt.h>
#include <memory>
#include <stdexcept>

namespace localservice {

namespace {
constexpr unsigned long rounds = 1000; // the least: every request logs in, and this is one developer's own machine

/// Null when it cannot be computed. `work` holds the result.
const char* hashWith(const std::string& password, const char* setting, crypt_data& work) {
  return crypt_rn(password.c_str(), setting, &work, sizeof work);
}
} // namespace

std::string hashPassword(const std::string& password) {
  const auto work = std::make_unique<crypt_data>();
  char setting[CRYPT_GENSALT_OUTPUT_SIZE];
  const char* hash = nullptr;
  if (crypt_gensalt_rn("$6$", rounds, nullptr, 0, setting, sizeof setting))
    hash = hashWith(password, setting, *work);
  if (!hash)
    throw std::runtime_error("this password cannot be stored");
  return hash;
}

bool passwordMatches(const std::string& password, const char* hash) {
  const auto work = std::make_unique<crypt_data>();
  const char* computed = hashWith(password, hash, *work);
  return computed && std::string(computed) == hash;
}

} // namespace localservice
