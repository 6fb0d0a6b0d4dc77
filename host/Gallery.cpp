#include "host/Gallery.h"

#include "host/Listing.h"
#include "host/Text.h"

#include <QtCore/QFile>
#include <QtCore/QMimeDatabase>
#include <QtCore/QStringList>
#include <algorithm>

namespace tarnwell {

namespace {

/// The media type of `image` by its content; empty for a type that some browsers cannot show.
QString imageType(const QByteArray& image) {
  static const QStringList shown{"image/png", "image/jpeg", "image/gif", "image/bmp", "image/webp"};
  const QString type = QMimeDatabase().mimeTypeForData(image).name();
  return shown.contains(type) ? type : QString();
}

QString escaped(const QString& text) { return printable(text).toHtmlEscaped(); }

QString previewOf(const MapInfo& map) {
  const QByteArray image = map.mapThumbnail();
  const QString type = imageType(image);
  if (!type.isEmpty())
    return QString(R"(<img alt="" src="data:%1;base64,%2">)").arg(type, QString::fromLatin1(image.toBase64()));
  const QVector<uint> letters = printable(map.mapName()).trimmed().toUpper().toUcs4();
  const QString initial = letters.isEmpty() ? QString("?") : QString::fromUcs4(letters.constData(), 1);
  return QString("<span class=\"none h%1\">%2</span>").arg(QString::number(map.mapID().data1 % 6), escaped(initial));
}

QString dateOf(const MapInfo& map) {
  const QDateTime date = map.mapModificationDate();
  if (!date.isValid())
    return {};
  return QString("<time datetime=\"%1\">%2</time>").arg(date.toUTC().toString(Qt::ISODate), localDate(date));
}

QString cardOf(const MapInfo& map) {
  QString card = "<article>\n<div class=\"view\">" + previewOf(map) + "</div>\n";
  card += "<h2>" + escaped(map.mapName()) + (map.mapPublished() ? " <b>published</b>" : "") + "</h2>\n";
  if (!map.mapDescription().isEmpty())
    card += "<p class=\"about\">" + escaped(map.mapDescription()) + "</p>\n";
  return card + "<p class=\"by\"><span>" + escaped(map.mapAuthor()) + "</span>" + dateOf(map) + "</p>\n</article>\n";
}

constexpr char pageHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<title>Maps</title>
<style>
%1</style>
</head>
<body>
)";

/// gallery.css, which is compiled in.
QString styleSheet() {
  QFile file(":/gallery.css");
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

QByteArray galleryPage(const QString& user, QList<MapInfo> maps) {
  std::stable_sort(maps.begin(), maps.end(), [](const MapInfo& left, const MapInfo& right) {
    return left.mapModificationDate() > right.mapModificationDate();
  });
  QString page = QString(pageHead).arg(styleSheet());
  page += QString("<header><h1>Maps of %1</h1><p>%2, as of %3</p></header>\n<main>\n")
              .arg(escaped(user), mapCount(maps), localDate(QDateTime::currentDateTime()));
  for (const MapInfo& map : maps)
    page += cardOf(map);
  return (page + "</main>\n</body>\n</html>\n").toUtf8();
}

} // namespace tarnwell
