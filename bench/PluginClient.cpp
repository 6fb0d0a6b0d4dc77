// The peer `ours`: the plug-in as a host uses it, loaded at run time and reached through its interface alone.
#include "bench/Harness.h"
#include "service/ITarnwellService.h"

#include <QtCore/QLibrary>

#include <cstdio>
#include <cstdlib>

namespace {

class PluginPeer : public bench::Peer {
public:
  explicit PluginPeer(ITarnwellService* service) : m_service(service) {}

  int login(const QString& user, const QString& password) override { return m_service->login(user, password); }
  int list(QList<MapInfo>& maps) override { return m_service->getDesktopMapsList(true, maps); }
  int get(MapInfo& map) override { return m_service->getMap(map); }
  int save(const QString& file, MapInfo& map, const QByteArray& thumbnail) override {
    return m_service->saveMap(file, map, thumbnail, true);
  }

private:
  std::unique_ptr<ITarnwellService> m_service;
};

std::unique_ptr<bench::Peer> connect(const char* endpoint) {
  QLibrary library(QStringLiteral(TARNWELL_PLUGIN));
  auto factory = reinterpret_cast<ServiceFactory>(library.resolve(serviceFactoryName));
  if (!factory) {
    fprintf(stderr, "%s\n", qPrintable(library.errorString()));
    exit(2);
  }
  ITarnwellService* service = factory();
  service->setEndPoint(QString::fromLocal8Bit(endpoint));
  return std::make_unique<PluginPeer>(service);
}

} // namespace

int main(int argc, char** argv) { return bench::run(argc, argv, connect); }
