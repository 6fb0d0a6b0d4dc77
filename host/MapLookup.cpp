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

void failAmbiguous(const QString& text, const QList<MapInfo>& matches) {
  fail(UsageError, QString("%1 can be any of %2 maps").arg(quoted(text), QString::number(matches.size())),
       "name the map by its identifier:\n" + mapTable(matches, false, 0).trimmed(),
       {{"maps", mapsToJson(matches, false)}});
}

MapInfo findMap(const QList<MapInfo>& maps, const QString& text) {
  const QUuid identifier(text);
  QList<MapInfo> matches = identifier.isNull()
                               ? mapsNamed(maps, text)
                               : mapsWith(maps, [&](const MapInfo& map) { return map.mapID() == identifier; });
  if (matches.isEmpty() && !identifier.isNull()) {
    matches += MapInfo();
    matches.last().setMapID(identifier);
  }
  if (matches.isEmpty() && text.size() >= fewestDigits) {
    matches = mapsWith(maps, [&text](const MapInfo& map) {
      return map.mapID().toString(QUuid::WithoutBraces).startsWith(text, Qt::CaseInsensitive);
    });
  }
  if (matches.isEmpty())
    fail(UsageError, QString("no map is named %1").arg(quoted(text)),
         "'tarnwell list' shows names and identifiers; a name with blanks needs quotes");
  if (matches.size() > 1)
    failAmbiguous(text, matches);
  return matches.first();
}

} // namespace tarnwell
