// A host with a window: qthost [ENDPOINT [PLUGIN]]
#include "Window.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>

int main(int argc, char** argv) {
#if QT_VERSION_MAJOR < 6 // later it is always so
  QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
  QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  Cloud cloud(arguments.value(2, TARNWELL_PLUGIN));
  if (!cloud.error().isEmpty()) {
    QMessageBox::critical(nullptr, "Tarnwell",
                          QCoreApplication::translate("main", "The plug-in cannot be loaded: %1").arg(cloud.error()));
    return 1;
  }
  Window window(cloud, arguments.value(1, "http://127.0.0.1:8080/service/desktopservice.asmx"));
  window.show();
  return QApplication::exec();
}
