#include "host/Credentials.h"

#include "host/Text.h"
#include "terminal/Password.h"

#include <QtCore/QProcess>

namespace tarnwell {

namespace {

QString printedBy(const QString& command) {
  QStringList words = QProcess::splitCommand(command);
  QProcess process;
  process.setInputChannelMode(QProcess::ForwardedInputChannel); // it may ask the user
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  if (!words.isEmpty())
    process.setProgram(words.takeFirst());
  process.setArguments(words);
  process.start();
  constexpr int noLimit = -1;
  if (!process.waitForFinished(noLimit) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
    const QString reason = process.error() == QProcess::FailedToStart ? process.errorString()
                                                                      : QString("status %1").arg(process.exitCode());
    fail(LocalError, QString("the password-command %1 failed: %2").arg(quoted(command), reason),
         "run it by itself; a pipe needs a shell, as in: sh -c \"COMMAND | COMMAND\"");
  }
  QString line = QString::fromUtf8(process.readAllStandardOutput()).section('\n', 0, 0);
  if (line.endsWith('\r'))
    line.chop(1);
  return line;
}

} // namespace

QString readPassword(const char* variable, const QString& command, const QString& prompt) {
  if (qEnvironmentVariableIsSet(variable))
    return QString::fromUtf8(qgetenv(variable));
  if (!command.isEmpty())
    return printedBy(command);
  std::string typed;
  if (!terminal::askPassword(prompt.toStdString(), typed))
    fail(UsageError, "no password could be read from the terminal",
         QString("set the environment variable %1").arg(variable));
  return QString::fromStdString(typed);
}

} // namespace tarnwell
