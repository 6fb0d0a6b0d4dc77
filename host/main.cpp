// tarnwell: a console host. Loads the plug-in and carries out one command.
#include "host/Commands.h"
#include "terminal/Utf8.h"

#include <QtCore/QCoreApplication>

int main(int argc, char** argv) {
  terminal::useUtf8();
  const QCoreApplication application(argc, argv);
  return tarnwell::runCommandLine(QCoreApplication::arguments());
}
