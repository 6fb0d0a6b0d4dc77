#include "host/Session.h"

#include "host/Listing.h"
#include "host/Password.h"
#include "host/Text.h"

#include <algorithm>

namespace tarnwell {

Outcome Session::number(const char* option, int& number) const {
  if (!isSet(option))
    return {};
  bool isNumber = false;
  const int given = value(option).toInt(&isNumber);
  if (!isNumber)
    return failure(UsageError, QString("--%1 takes a number, not %2").arg(option, quoted(value(option))));
  number = given;
  return {};
}

Outcome Session::logIn() {
  const QString user = value("user");
  if (user.isEmpty())
    return failure(UsageError, "nobody to log in as", "name your account with --user");
  Outcome opened = open();
  if (opened.failed())
    return opened;
  QString password;
  Outcome read = readPassword("TARNWELL_PASSWORD", QString("Password of %1: ").arg(user), password);
  if (read.failed())
    return read;
  const int result = during("logging in", [&](ITarnwellService& service) { return service.login(user, password); });
  if (result != ResultOk)
    return failure(result, QString("cannot log in as %1").arg(quoted(user)));
  return {};
}

Outcome Session::find(const QString& map, MapInfo& info) {
  QList<MapInfo> maps;
  const int result = during("looking for the map",
                            [&](ITarnwellService& service) { return service.getDesktopMapsListLite(false, maps); });
  if (result != ResultOk)
    return failure(result, "cannot list the maps");
  const QUuid identifier(map);
  QList<MapInfo> matches;
  std::copy_if(maps.begin(), maps.end(), std::back_inserter(matches), [&](const MapInfo& candidate) {
    return identifier.isNull() ? candidate.mapName() == map : candidate.mapID() == identifier;
  });
  if (matches.size() == 1) {
    info = matches.first();
    return {};
  }
  if (!identifier.isNull()) {
    info.setMapID(identifier);
    return {};
  }
  if (matches.isEmpty()) {
    return failure(UsageError, QString("no map is named %1").arg(quoted(map)),
                   "'tarnwell list' shows names and identifiers; a name with blanks needs quotes");
  }
  Outcome ambiguous =
      failure(UsageError, QString("%1 maps are named %2").arg(QString::number(matches.size()), quoted(map)),
              "name the map by its identifier:\n" + mapTable(matches, false).trimmed());
  ambiguous.data["maps"] = mapsToJson(matches, false);
  return ambiguous;
}

} // namespace tarnwell
