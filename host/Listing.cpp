#include "host/Listing.h"

#include "host/Text.h"

#include <QtCore/QStringList>
#include <unistd.h>

namespace tarnwell {

namespace {

/// A record's -1 stands for a version that is not known.
QJsonValue versionToJson(float version) {
  if (version < 0)
    return QJsonValue();
  // By way of its text: 3.1, not 3.0999999046.
  return QString::number(static_cast<double>(version), 'g', 7).toDouble();
}

QString cell(const QString& text, int columns) {
  const QString safe = printable(text);
  return isatty(STDOUT_FILENO) != 0 ? shortened(safe, columns) : safe;
}

} // namespace

QString mapTitle(const MapInfo& map) {
  if (map.mapID().isNull())
    return quoted(map.mapName());
  return map.mapName().isNull() ? map.mapID().toString() : quoted(map.mapName()) + ' ' + map.mapID().toString();
}

QString mapCount(const QList<MapInfo>& maps) {
  return maps.size() == 1 ? QString("1 map") : QString("%1 maps").arg(maps.size());
}

QString mapTable(const QList<MapInfo>& maps, bool hasPreviews) {
  constexpr int previewColumn = 4;
  QStringList headings{"NAME", "AUTHOR", "MODIFIED", "PUBLISHED"};
  if (hasPreviews)
    headings += "PREVIEW";
  QList<QStringList> rows{headings << "IDENTIFIER"};
  for (const MapInfo& map : maps) {
    QStringList row{cell(map.mapName(), 32), cell(map.mapAuthor(), 16), localDate(map.mapModificationDate()),
                    map.mapPublished() ? "yes" : "no"};
    if (hasPreviews)
      row += map.mapThumbnail().isEmpty() ? QString("-") : humanSize(map.mapThumbnail().size());
    rows += row << map.mapID().toString(QUuid::WithoutBraces);
  }
  return table(rows, hasPreviews ? previewColumn : -1);
}

QJsonObject mapToJson(const MapInfo& map, bool hasPreview) {
  const QDateTime modified = map.mapModificationDate();
  QJsonObject object{{"id", map.mapID().toString(QUuid::WithoutBraces)},
                     {"name", map.mapName()},
                     {"author", map.mapAuthor()},
                     {"description", map.mapDescription()},
                     {"modified", modified.isValid() ? modified.toUTC().toString(Qt::ISODate) : QJsonValue()},
                     {"published", map.mapPublished()},
                     {"version", versionToJson(map.version())},
                     {"twlx", map.isTWLX()}};
  if (hasPreview)
    object["preview"] = QString::fromLatin1(map.mapThumbnail().toBase64());
  return object;
}

QJsonArray mapsToJson(const QList<MapInfo>& maps, bool hasPreviews) {
  QJsonArray array;
  for (const MapInfo& map : maps)
    array += mapToJson(map, hasPreviews);
  return array;
}

} // namespace tarnwell
