#include "host/MapLookup.h"

#include "host/Listing.h"
#include "host/Text.h"

#include <algorithm>

namespace tarnwell {

namespace {

constexpr int fewestDigits = 8;

template <typename Condition> QList<MapInfo> mapsWith(const QList<MapInfo>& maps, Condition condition) {
  QList<MapInfo> matches;
  std::copy_if(maps.begin(), maps.end(), std::back_inserter(matches), condition);
  return matches;
}

} // namespace

QList<MapInfo> mapsNamed(const QList<MapInfo>& maps, const QString& name) {
  return mapsWith(maps, [&name](const MapInfo& map) { return map.mapName() == name; });
}

CommandResult ambiguity(const QString& text, const QList<MapInfo>& matches) {
  CommandResult result =
      failure(UsageError, QString("%1 can be any of %2 maps").arg(quoted(text), QString::number(matches.size())),
              "name the map by its identifier:\n" + mapTable(matches, false, 0).trimmed());
  result.data["maps"] = mapsToJson(matches, false);
  return result;
}

CommandResult findMap(const QList<MapInfo>& maps, const QString& text, MapInfo& info) {
  const QUuid identifier(text);
  QList<MapInfo> matches = identifier.isNull()
                               ? mapsNamed(maps, text)
                               : mapsWith(maps, [&](const MapInfo& map) { return map.mapID() == identifier; });
  if (matches.isEmpty() && !identifier.isNull()) {
    info.setMapID(identifier);
    return {};
  }
  if (matches.isEmpty() && text.size() >= fewestDigits) {
    matches = mapsWith(maps, [&text](const MapInfo& map) {
      return map.mapID().toString(QUuid::WithoutBraces).startsWith(text, Qt::CaseInsensitive);
    });
  }
  if (matches.isEmpty()) {
    return failure(UsageError, QString("no map is named %1").arg(quoted(text)),
                   "'tarnwell list' shows names and identifiers; a name with blanks needs quotes");
  }
  if (matches.size() > 1)
    return ambiguity(text, matches);
  info = matches.first();
  return {};
}

} // namespace tarnwell
