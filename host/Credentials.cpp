#include "host/Credentials.h"

#include "terminal/Password.h"

namespace tarnwell {

QString readPassword(const char* variable, const QString& prompt) {
  if (qEnvironmentVariableIsSet(variable))
    return QString::fromUtf8(qgetenv(variable));
  std::string typed;
  if (!terminal::askPassword(prompt.toStdString(), typed))
    fail(UsageError, "no password could be read from the terminal",
         QString("set the environment variable %1").arg(variable));
  return QString::fromStdString(typed);
}

} // namespace tarnwell
