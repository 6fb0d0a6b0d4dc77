#include "host/MapLookup.h"

#include "host/Listing.h"
#include "host/Text.h"

#include <algorithm>

namespace tarnwell {

namespace {

/// The identifier that `text` is, with or without braces; null for a text that is anything else. QUuid alone would take
/// a text that only begins with an identifier.
QUuid identifierOf(const QString& text) {
  const QUuid identifier(text);
  const QString lower = text.toLower();
  return lower == identifier.toString() || lower == identifier.toString(QUuid::WithoutBraces) ? identifier : QUuid();
}

/// Whether `text` is the beginning of the map's identifier, long enough to name it.
bool isBeginning(const QString& text, const MapInfo& map) {
  constexpr int fewestDigits = 8;
  return text.size() >= fewestDigits && !map.mapID().isNull() &&
         map.mapID().toString(QUuid::WithoutBraces).startsWith(text, Qt::CaseInsensitive);
}

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
  const QUuid identifier = identifierOf(text);
  const QList<MapInfo> matches = mapsWith(maps, [&](const MapInfo& map) {
    return map.mapName() == text || (!identifier.isNull() && map.mapID() == identifier) || isBeginning(text, map);
  });
  if (matches.size() > 1)
    failAmbiguous(text, matches);
  if (matches.isEmpty() && identifier.isNull()) {
    fail(UsageError, QString("no map is named %1").arg(quoted(text)),
         "'tarnwell list' shows names and identifiers; a name with blanks needs quotes");
  }
  MapInfo found = matches.value(0);
  if (matches.isEmpty())
    found.setMapID(identifier);
  return found;
}

} // namespace tarnwell
