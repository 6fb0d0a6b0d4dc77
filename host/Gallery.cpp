#include "host/Gallery.h"

#include "host/Listing.h"
#include "host/Text.h"

#include <QtCore/QFile>
#include <QtCore/QMimeDatabase>
#include <algorithm>

namespace tarnwell {

namespace {

/// The types that all browsers show, each with bytes that its images have at their end.
constexpr std::pair<const char*, const char*> imageTypes[] = {
    {"image/png", "IEND"}, {"image/jpeg", "\xff\xd9"}, {"image/gif", ";"}, {"image/bmp", ""}, {"image/webp", ""}};

/// The media type of `image` by its content; empty for an unknown type and for an image that is cut off.
QString imageType(const QByteArray& image) {
  const QString found = QMimeDatabase().mimeTypeForData(image).name();
  for (const auto& [type, end] : imageTypes) {
    if (found == type && image.contains(end))
      return found;
  }
  return {};
}

QString escaped(const QString& text) { return printable(text).toHtmlEscaped(); }

QString previewOf(const MapInfo& map) {
  const std::u32string letters = printable(map.mapName()).trimmed().toUpper().toStdU32String();
  const QString initial = letters.empty() ? QString("?") : QString::fromUcs4(letters.data(), 1);
  const QString letter =
      QString("<span class=\"none h%1\">%2</span>").arg(QString::number(map.mapID().data1 % 6), escaped(initial));
  const QByteArray image = map.mapThumbnail();
  const QString type = imageType(image);
  if (type.isEmpty())
    return letter;
  // Unlike <img>, <object> shows what is inside it when the image is broken.
  return QString(R"(<object type="%1" data="data:%1;base64,%2">%3</object>)")
      .arg(type, QString::fromLatin1(image.toBase64()), letter);
}

QString dateOf(const MapInfo& map) {
  const QDateTime date = map.mapModificationDate();
  if (!date.isValid())
    return {};
  return QString("<time datetime=\"%1\">%2</time>").arg(date.toUTC().toString(Qt::ISODate), localDate(date));
}

QString cardOf(const MapInfo& map) {
  QString card = "<article>\n<div class=\"view\" aria-hidden=\"true\">" + previewOf(map) + "</div>\n";
  card += "<h2 dir=\"auto\">" + escaped(map.mapName()) + (map.mapPublished() ? " <b>published</b>" : "") + "</h2>\n";
  if (!map.mapDescription().isEmpty())
    card += "<p class=\"about\" dir=\"auto\">" + escaped(map.mapDescription()) + "</p>\n";
  return card + "<p class=\"by\"><span dir=\"auto\">" + escaped(map.mapAuthor()) + "</span>" + dateOf(map) +
         "</p>\n</article>\n";
}

constexpr char pageHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; object-src data:; style-src 'unsafe-inline'">
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
  page += QString("<header><h1>Maps of <bdi>%1</bdi></h1><p>%2, as of %3</p></header>\n<main>\n")
              .arg(escaped(user), mapCount(maps), localDate(QDateTime::currentDateTime()));
  if (maps.isEmpty())
    page += "<p>There are no maps to show.</p>\n";
  for (const MapInfo& map : maps)
    page += cardOf(map);
  return (page + "</main>\n</body>\n</html>\n").toUtf8();
}

} // namespace tarnwell
