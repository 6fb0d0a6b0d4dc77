#include "host/Credentials.h"

#include "terminal/Password.h"

namespace tarnwell {

CommandResult readPassword(const char* variable, const QString& prompt, QString& password) {
  if (qEnvironmentVariableIsSet(variable)) {
    password = QString::fromUtf8(qgetenv(variable));
    return {};
  }
  std::string typed;
  if (!terminal::askPassword(prompt.toStdString(), typed)) {
    return failure(UsageError, "no password could be read from the terminal",
                   QString("set the environment variable %1").arg(variable));
  }
  password = QString::fromStdString(typed);
  return {};
}

} // namespace tarnwell
