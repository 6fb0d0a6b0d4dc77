#include "host/Text.h"

#include "terminal/Printable.h"

#include <QtCore/QLocale>
#include <QtCore/QTextBoundaryFinder>
#include <algorithm>
#include <uniwidth.h>

namespace tarnwell {

QString printable(const QString& text) {
  QString line = text;
  for (const char blank : {'\n', '\r', '\t'})
    line.replace(blank, ' ');
  return terminal::printable(line);
}

QString quoted(const QString& text) { return '"' + printable(text) + '"'; }

QByteArray terminalSafeJson(const QByteArray& json) {
  // Outside its texts, a JSON document has no such character but line feeds, so that it need not be parsed.
  const QString text = QString::fromUtf8(json);
  QString safe;
  safe.reserve(text.size());
  for (const QChar unit : text) {
    if (unit == '\n' || unit.isSurrogate() || !terminal::isUnsafe(unit.unicode()))
      safe += unit;
    else
      safe += QString("\\u%1").arg(int{unit.unicode()}, 4, 16, QChar('0'));
  }
  return safe.toUtf8();
}

int displayWidth(const QString& text) {
  return u16_width(reinterpret_cast<const uint16_t*>(text.utf16()), static_cast<size_t>(text.size()), "UTF-8");
}

QString shortened(const QString& text, int columns) {
  if (displayWidth(text) <= columns)
    return text;
  QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
  decltype(text.size()) kept = 0;
  int room = columns - 1; // one is for the ellipsis
  for (auto end = characters.toNextBoundary(); end > 0; end = characters.toNextBoundary()) {
    room -= displayWidth(text.mid(kept, end - kept));
    if (room < 0)
      break;
    kept = end;
  }
  return text.left(kept) + QChar(0x2026);
}

QString padded(const QString& text, int columns, bool isRight) {
  const QString blanks(std::max(columns - displayWidth(text), 0), ' ');
  return isRight ? blanks + text : text + blanks;
}

QString humanSize(qint64 bytes) { return QLocale::c().formattedDataSize(bytes, 1); }

QString localDate(const QDateTime& date) {
  return date.isValid() ? date.toLocalTime().toString("yyyy-MM-dd HH:mm") : QString("-");
}

} // namespace tarnwell
