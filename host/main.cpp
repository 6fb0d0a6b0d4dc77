// tarnwell: a console host. Loads the plug-in and carries out one command.
#include "host/Commands.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>

int main(int argc, char** argv) {
  // Arguments and file names are UTF-8 in every locale: with LANG=C, Qt 5 would keep only ASCII characters.
  QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
  const QCoreApplication application(argc, argv);
  return tarnwell::runCommandLine(QCoreApplication::arguments());
}
