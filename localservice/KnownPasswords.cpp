#include "localservice/KnownPasswords.h"

#include <QtCore/QMessageAuthenticationCode>
#include <QtCore/QRandomGenerator>
#include <array>

namespace localservice {

KnownPasswords::KnownPasswords() {
  std::array<quint32, 8> random{}; // 256 bits, the length of the code
  QRandomGenerator::system()->fillRange(random.data(), static_cast<qsizetype>(random.size()));
  key = QByteArray(reinterpret_cast<const char*>(random.data()), sizeof random);
}

bool KnownPasswords::contains(const std::string& name, const std::string& password, const std::string& hash) {
  const QByteArray code = codeOf(name, password);
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = byName.find(name);
  if (found == byName.end())
    return false;
  if (found->second.hash == hash)
    return found->second.code == code;
  byName.erase(found);
  return false;
}

void KnownPasswords::add(const std::string& name, const std::string& password, const std::string& hash) {
  QByteArray code = codeOf(name, password);
  const std::lock_guard<std::mutex> lock(mutex);
  byName[name] = {hash, std::move(code)};
}

QByteArray KnownPasswords::codeOf(const std::string& name, const std::string& password) const {
  QMessageAuthenticationCode code(QCryptographicHash::Sha256, key);
  code.addData(name.c_str(), static_cast<int>(name.size() + 1)); // with its end, which no name contains
  code.addData(password.data(), static_cast<int>(password.size()));
  return code.result();
}

} // namespace localservice
