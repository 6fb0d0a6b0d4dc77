#include "host/Plugin.h"

#include "host/Text.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

namespace tarnwell {

namespace {

constexpr char pluginName[] = "libtarnwell.so";
/// Relative to the executable's folder: in the build tree, then in installations.
constexpr const char* pluginFolders[] = {".", TARNWELL_PLUGIN_FOLDER, "../lib"};

QString findPlugin() {
  const QDir here(QCoreApplication::applicationDirPath());
  for (const char* folder : pluginFolders) {
    const QFileInfo candidate(here, QString("%1/%2").arg(folder, pluginName));
    if (candidate.isFile())
      return candidate.absoluteFilePath();
  }
  return {};
}

} // namespace

std::unique_ptr<ITarnwellService> loadPlugin(const QString& file) {
  // An absolute path, because the loader would look for a bare name in the system's library folders.
  const QString path = file.isEmpty() ? findPlugin() : QFileInfo(file).absoluteFilePath();
  if (path.isEmpty())
    fail(LocalError, QString("found no plug-in %1").arg(pluginName), "name its file with --plugin");
  QLibrary library(path);
  if (!library.load())
    fail(LocalError, printable(library.errorString()), "name the plug-in's file with --plugin");
  const auto factory = reinterpret_cast<ServiceFactory>(library.resolve(serviceFactoryName));
  if (factory == nullptr) {
    fail(LocalError,
         QString("%1 is no plug-in for Qt %2: it has no function %3")
             .arg(quoted(path), QString::number(QT_VERSION_MAJOR), serviceFactoryName),
         "name another file with --plugin");
  }
  return std::unique_ptr<ITarnwellService>(factory());
}

} // namespace tarnwell
