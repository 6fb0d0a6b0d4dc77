// tarnwell: a console host. Loads the plug-in and carries out one command.
#include "host/Commands.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>

int main(int argc, char** argv) {
  // Arguments and file names are UTF-8 whatever the locale says: with LANG=C, Qt 5 would lose all but ASCII.
  QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
  const QCoreApplication application(argc, argv);
  const QStringList commandLine = QCoreApplication::arguments();
  QString command;
  const tarnwell::Outcome outcome = tarnwell::runCommandLine(commandLine, command);
  return tarnwell::show(outcome, command, commandLine.contains("--json"));
}
