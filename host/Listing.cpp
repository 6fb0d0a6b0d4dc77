#include "host/Listing.h"

#include "host/Text.h"

#include <QtCore/QStringList>
#include <algorithm>
#include <numeric>

namespace tarnwell {

namespace {

/// Null for a negative version: a record has -1 while its version is not known.
QJsonValue versionToJson(float version) {
  if (version < 0)
    return QJsonValue();
  // The shortest text of a float avoids 3.0999999046 for 3.1.
  return QString::number(static_cast<double>(version), 'g', 7).toDouble();
}

struct Column {
  QString heading;
  QStringList cells;
  /// Cells may be cut to this width; 0: never cut. All widths are columns of the terminal.
  int least = 0;
  /// The column with the lowest rank is left out first; 0: never.
  int rank = 0;
  bool isRight = false;
  int width = 0;
};

constexpr int gap = 2; // between two columns

int totalWidth(const QList<Column>& columns) {
  return std::accumulate(columns.begin(), columns.end(), -gap,
                         [](int sum, const Column& column) { return sum + gap + column.width; });
}

/// Sets the width to that of the widest cell.
void measure(Column& column) {
  column.width = displayWidth(column.heading);
  for (const QString& cell : column.cells)
    column.width = std::max(column.width, displayWidth(cell));
}

/// Makes columns narrower, and leaves out columns when that is not enough.
void fit(QList<Column>& columns, int width) {
  std::for_each(columns.begin(), columns.end(), measure);
  for (auto i = columns.size() - 1; i >= 0; i--) { // names last
    Column& column = columns[i];
    const int surplus = totalWidth(columns) - width;
    if (column.least > 0 && surplus > 0)
      column.width = std::max(std::min(column.least, column.width), column.width - surplus);
  }
  if (totalWidth(columns) <= width)
    return;
  const auto first = std::min_element(columns.begin(), columns.end(), [](const Column& left, const Column& right) {
    return left.rank != 0 && (right.rank == 0 || left.rank < right.rank);
  });
  if (first->rank == 0)
    return;
  columns.erase(first);
  fit(columns, width);
}

QString lineOf(const QList<Column>& columns, int row) {
  QString line;
  for (const Column& column : columns) {
    const QString& text = row < 0 ? column.heading : column.cells[row];
    line += padded(shortened(text, column.width), column.width + (column.isRight ? 0 : gap), column.isRight) +
            (column.isRight ? QString(gap, ' ') : QString());
  }
  while (line.endsWith(' '))
    line.chop(1);
  return line + '\n';
}

QString isoDate(const MapInfo& map) { return map.mapModificationDate().toUTC().toString(Qt::ISODate); }

} // namespace

QString mapTitle(const MapInfo& map) {
  if (map.mapID().isNull())
    return quoted(map.mapName());
  return map.mapName().isNull() ? map.mapID().toString() : quoted(map.mapName()) + ' ' + map.mapID().toString();
}

QString mapCount(const QList<MapInfo>& maps) {
  return maps.size() == 1 ? QString("1 map") : QString("%1 maps").arg(maps.size());
}

QString mapTable(const QList<MapInfo>& maps, bool hasPreviews, int width) {
  enum { Name, Author, Modified, Published, Preview, Identifier };
  QList<Column> columns{{"NAME", {}, 12},        {"AUTHOR", {}, 8, 1},        {"MODIFIED", {}, 0, 4},
                        {"PUBLISHED", {}, 0, 3}, {"PREVIEW", {}, 0, 2, true}, {"IDENTIFIER", {}}};
  for (const MapInfo& map : maps) {
    columns[Name].cells += printable(map.mapName());
    columns[Author].cells += printable(map.mapAuthor());
    columns[Modified].cells += localDate(map.mapModificationDate());
    columns[Published].cells += map.mapPublished() ? "yes" : "no";
    columns[Preview].cells += map.mapThumbnail().isEmpty() ? "-" : humanSize(map.mapThumbnail().size());
    columns[Identifier].cells += map.mapID().toString(QUuid::WithoutBraces);
  }
  if (!hasPreviews)
    columns.removeAt(Preview);
  std::for_each(columns.begin(), columns.end(), measure);
  if (width > 0 && totalWidth(columns) > width) {
    constexpr int digits = 8;
    Column& identifier = columns.last();
    identifier.heading = "ID";
    std::for_each(identifier.cells.begin(), identifier.cells.end(), [](QString& cell) { cell.truncate(digits); });
    fit(columns, width);
  }
  QString text;
  for (int row = -1; row < maps.size(); row++)
    text += lineOf(columns, row);
  return text;
}

QString mapTabSeparated(const QList<MapInfo>& maps, bool hasPreviews) {
  const QString previewHeading = hasPreviews ? "preview\t" : "";
  QString text = "name\tauthor\tmodified\tpublished\t" + previewHeading + "identifier\n";
  for (const MapInfo& map : maps) {
    QStringList cells{printable(map.mapName()), printable(map.mapAuthor()), isoDate(map),
                      map.mapPublished() ? "yes" : "no"};
    if (hasPreviews)
      cells += QString::number(map.mapThumbnail().size());
    text += (cells << map.mapID().toString(QUuid::WithoutBraces)).join('\t') + '\n';
  }
  return text;
}

QJsonObject mapToJson(const MapInfo& map, bool hasPreview) {
  QJsonObject object{{"id", map.mapID().toString(QUuid::WithoutBraces)},
                     {"name", map.mapName()},
                     {"author", map.mapAuthor()},
                     {"description", map.mapDescription()},
                     {"modified", map.mapModificationDate().isValid() ? isoDate(map) : QJsonValue()},
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
