// KDSoap against a service: kdsoap_client ENDPOINT. Ends with status 1 at the first wrong value.
#include "wsdl_desktopservice.h"

#include <QtCore/QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace {

using Login = DSNS__DesktopLoginEnumerators;
using Access = DSNS__DesktopMapAccess;

DesktopService service;

void expect(const char* what, bool isRight) {
  if (isRight)
    return;
  fprintf(stderr, "%s: a wrong value; last error: %s\n", what, qPrintable(service.lastError()));
  exit(1);
}

/// The answer's result. The request has anna's credentials and the values that `fill` sets.
template <class Request, class Response, class Fill>
Response call(Response (DesktopService::*operation)(const Request&), Fill fill) {
  Request request;
  request.setUsername("anna");
  request.setPass("correct horse");
  fill(request);
  return (service.*operation)(request);
}

Login::Type login(const QString& password) {
  return call(&DesktopService::login, [&](auto& request) { request.setPass(password); })
      .loginResult()
      .desktopLoginValue();
}

QList<DSNS__DesktopInfoClass> maps() {
  const auto answer = call(&DesktopService::getMapsList_NEW_DESKTOP, [](auto&) {});
  return answer.getMapsList_NEW_DESKTOPResult().desktopInfoObjectList().desktopInfoClass();
}

} // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  service.setEndPoint(QString::fromLocal8Bit(argv[1]));
  service.setSoapVersion(KDSoapClientInterface::SOAP1_2);

  expect("login", login("correct horse") == Login::Success);
  expect("refused login", login("wrong") == Login::NotAUser);

  QByteArray content;
  for (int i = 0; i < 300'000; ++i)
    content += static_cast<char>(i);
  const QDateTime written = QDateTime::fromString("2026-03-04T05:06:07Z", Qt::ISODate);
  DSNS__DesktopInfoClass map;
  map.setMapName(QString::fromUtf8("Gärten & <Höfe> 🌱"));
  map.setLastModified(written);
  map.setCreated(written);
  map.setThumbnail(QByteArray("\x89PNG\0", 5));
  map.setMapContent(content);
  map.setIsPublished(true);
  const auto save = [&](auto& request) { request.setDesktopInfo(map); };
  const auto saved = call(&DesktopService::saveMap_NEW_DESKTOP, save).saveMap_NEW_DESKTOPResult();
  expect("save", saved.desktopMapAccess() == Access::Success);
  const auto again = call(&DesktopService::saveMap_NEW_DESKTOP, save).saveMap_NEW_DESKTOPResult();
  expect("second save", again.desktopMapAccess() == Access::FileExists);

  const auto listed = maps();
  expect("list", listed.size() == 1 && listed[0].mapName() == map.mapName() &&
                     listed[0].thumbnail() == map.thumbnail() && listed[0].lastModified() == written &&
                     listed[0].isPublished());
  DSNS__DesktopInfoClass stored;
  stored.setMapId(saved.desktopInfoClass().mapId());
  stored.setMapName("Courtyards");
  stored.setLastModified(written);
  stored.setCreated(written);
  const auto naming = [&](auto& request) { request.setDesktopInfo(stored); };
  const auto got = call(&DesktopService::getMapContent_NEW_DESKTOP, naming).getMapContent_NEW_DESKTOPResult();
  expect("get", got.desktopMapAccess() == Access::Success && got.desktopInfo().mapContent() == content);
  const auto renamed = call(&DesktopService::renameDesktopMap, naming).renameDesktopMapResult();
  expect("rename", renamed.desktopMapAccess() == Access::Success);
  expect("list after the rename", maps().size() == 1 && maps()[0].mapName() == "Courtyards");
  const auto deleted = call(&DesktopService::deleteDesktopMap, naming).deleteDesktopMapResult();
  expect("delete", deleted.desktopMapAccess() == Access::Success);
  expect("list after the deletion", maps().isEmpty());
  const auto gone = call(&DesktopService::getMapContent_NEW_DESKTOP, naming).getMapContent_NEW_DESKTOPResult();
  expect("get after the deletion", gone.desktopMapAccess() == Access::MapRemoved);
}
