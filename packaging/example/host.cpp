// Logs in with the installed plug-in: host ENDPOINT USER PASSWORD. The exit status is the result code.
#include <service/ITarnwellService.h>

#include <QtCore/QLibrary>

#include <cstdio>
#include <memory>

int main(int, char** argv) {
  QLibrary library(TARNWELL_PLUGIN);
  const auto factory = reinterpret_cast<ServiceFactory>(library.resolve(serviceFactoryName));
  if (!factory) {
    fprintf(stderr, "%s\n",
            library.isLoaded() ? TARNWELL_PLUGIN " is no plug-in for this Qt" : qPrintable(library.errorString()));
    return 2;
  }
  const std::unique_ptr<ITarnwellService> service(factory());
  service->setEndPoint(argv[1]);
  return service->login(argv[2], argv[3]);
}
