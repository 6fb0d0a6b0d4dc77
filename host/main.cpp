// tarnwell: a console host. Loads the plug-in and carries out one command.
#include "host/Commands.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>
#include <csignal>

int main(int argc, char** argv) {
  // Arguments and file names are UTF-8 in every locale: with LANG=C, Qt 5 would keep only ASCII characters.
  QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
  const QCoreApplication application(argc, argv);
  const QStringList commandLine = QCoreApplication::arguments();
  QString command;
  const tarnwell::CommandResult result = tarnwell::runCommandLine(commandLine, command);
  const int status = tarnwell::show(result, command, commandLine.contains("--json"));
  if (status >= tarnwell::FirstSignalStatus)
    std::raise(status - tarnwell::FirstSignalStatus + 1); // so that a loop in a shell ends too
  return status;
}
