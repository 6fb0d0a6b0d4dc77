// Remembers which passwords have matched in this process, so that not every request costs the time of a hash. Used by
// PasswordHash.cpp. Any thread.
#pragma once

#include <QtCore/QByteArray>
#include <map>
#include <mutex>
#include <string>

namespace localservice {

/// The last password of each account that has matched. Holds no password, only its HMAC-SHA256 under a random key of
/// this process.
class KnownPasswords {
public:
  KnownPasswords();

  /// Whether `password` has matched for account `name` while its stored hash was `hash`. Forgets the account's password
  /// when the stored hash has changed.
  bool contains(const std::string& name, const std::string& password, const std::string& hash);
  void add(const std::string& name, const std::string& password, const std::string& hash);

private:
  struct Known {
    std::string hash;
    QByteArray code;
  };
  QByteArray codeOf(const std::string& name, const std::string& password) const;

  QByteArray key;
  std::mutex mutex;
  std::map<std::string, Known> byName;
};

} // namespace localservice
