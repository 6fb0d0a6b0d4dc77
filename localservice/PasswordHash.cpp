#include "localservice/PasswordHash.h"

#include "localservice/KnownPasswords.h"

#include <algorithm>
#include <condition_variable>
#include <crypt.h>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

namespace localservice {

namespace {

/// The hash of `password` with the method, cost and salt of `setting`; null: the preferred ones and a new salt. Empty
/// when it cannot be computed.
std::string computeHash(const std::string& password, const char* setting) {
  const auto work = std::make_unique<crypt_data>();
  char fresh[CRYPT_GENSALT_OUTPUT_SIZE];
  if (!setting)
    setting = crypt_gensalt_rn(nullptr, 0, nullptr, 0, fresh, sizeof fresh);
  const char* const hash = setting ? crypt_rn(password.c_str(), setting, work.get(), sizeof *work) : nullptr;
  return hash ? hash : "";
}

/// Admits to hashing one password of each name, and one for each core: whoever tries many passwords for one name holds
/// up no other user. Unknown names are treated like known ones, so that a wait tells nothing about them.
class HashTurn {
public:
  explicit HashTurn(const std::string& account) : name(account) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return names.size() < most && names.count(name) == 0; });
    names.insert(name);
  }
  ~HashTurn() {
    const std::lock_guard<std::mutex> lock(mutex);
    names.erase(name);
    changed.notify_all();
  }
  HashTurn(const HashTurn&) = delete;
  HashTurn& operator=(const HashTurn&) = delete;

private:
  static inline const std::size_t most = std::max(2U, std::thread::hardware_concurrency());
  static inline std::mutex mutex;
  static inline std::condition_variable changed;
  static inline std::set<std::string> names; ///< whose passwords are hashed now

  const std::string& name;
};

} // namespace

std::string hashPassword(const std::string& password) {
  std::string hash = computeHash(password, nullptr);
  if (hash.empty())
    throw std::runtime_error("the password cannot be hashed; it may have at most 511 bytes");
  return hash;
}

bool passwordMatches(const std::string& name, const std::string& password, const std::string& hash) {
  static KnownPasswords known;
  if (known.contains(name, password, hash))
    return true;
  const HashTurn turn(name);
  if (known.contains(name, password, hash)) // another request has hashed it meanwhile
    return true;
  const std::string computed = computeHash(password, hash.c_str());
  if (computed.empty() || computed != hash)
    return false;
  known.add(name, password, hash);
  return true;
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
