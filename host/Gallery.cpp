#include "host/Gallery.h"

#include "host/Listing.h"
#include "host/Text.h"

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
:root { color-scheme: light dark; --page: #f4f2ee; --card: #fff; --ink: #24262b; --soft: #6b6f78; --line: #0000001a;
  --good: #2f7a4e; }
@media (prefers-color-scheme: dark) {
  :root { --page: #17191d; --card: #22252b; --ink: #e8e8ea; --soft: #9a9fa9; --line: #ffffff1f;
    --good: #7ccf9d; }
}
* { box-sizing: border-box; margin: 0; }
body { background: var(--page); color: var(--ink); font: 15px/1.45 system-ui, sans-serif;
  padding: 2.5rem clamp(1rem, 4vw, 4rem); }
header { display: flex; flex-wrap: wrap; align-items: baseline; gap: .25rem 1rem; margin-bottom: 1.75rem; }
h1 { font-size: 1.7rem; letter-spacing: -.01em; overflow-wrap: anywhere; }
header p, .about, .by { color: var(--soft); }
main { display: grid; grid-template-columns: repeat(auto-fill, minmax(15rem, 1fr)); gap: 1.4rem; }
article { display: flex; flex-direction: column; background: var(--card); border: 1px solid var(--line);
  border-radius: 12px; overflow: hidden; box-shadow: 0 1px 3px #00000014; break-inside: avoid; }
.view { aspect-ratio: 8 / 5; position: relative; border-bottom: 1px solid var(--line); }
.view > * { position: absolute; width: 100%; height: 100%; object-fit: contain; }
img { background: #fff; }
.none { display: grid; place-items: center; font-size: 4rem; font-weight: 600; color: #fff; }
.h0 { background: #3f6b8f; } .h1 { background: #5a7d4e; } .h2 { background: #9a5b3c; }
.h3 { background: #77568f; } .h4 { background: #a0506a; } .h5 { background: #2f7a76; }
h2 { font-size: 1.05rem; line-height: 1.3; padding: .9rem 1rem 0; overflow-wrap: anywhere; }
h2 b { font-size: .7rem; font-weight: 600; vertical-align: .12em; padding: .12em .55em; border-radius: 1em;
  color: var(--good); background: #2f7a4e26; }
.about { padding: .3rem 1rem 0; font-size: .9rem; overflow-wrap: anywhere; display: -webkit-box;
  -webkit-box-orient: vertical; -webkit-line-clamp: 3; overflow: hidden; }
.by { margin-top: auto; padding: .7rem 1rem .9rem; font-size: .85rem; display: flex; justify-content: space-between;
  gap: 1rem; }
.by span { overflow-wrap: anywhere; }
time { white-space: nowrap; font-variant-numeric: tabular-nums; }
</style>
</head>
<body>
)";

} // namespace

QByteArray galleryPage(const QString& user, QList<MapInfo> maps) {
  std::stable_sort(maps.begin(), maps.end(), [](const MapInfo& left, const MapInfo& right) {
    return left.mapModificationDate() > right.mapModificationDate();
  });
  QString page = pageHead;
  page += QString("<header><h1>Maps of %1</h1><p>%2, as of %3</p></header>\n<main>\n")
              .arg(escaped(user), mapCount(maps), localDate(QDateTime::currentDateTime()));
  for (const MapInfo& map : maps)
    page += cardOf(map);
  return (page + "</main>\n</body>\n</html>\n").toUtf8();
}

} // namespace tarnwell
