#include "host/Text.h"

#include <QtCore/QLocale>
#include <QtCore/QTextBoundaryFinder>
#include <QtCore/QVector>
#include <algorithm>
#include <uniwidth.h>

namespace tarnwell {

namespace {

/// Whether a terminal may act on this code point instead of showing it.
bool isUnsafe(uint codePoint) {
  switch (QChar::category(codePoint)) {
  case QChar::Other_Control:
  case QChar::Other_Surrogate:
  case QChar::Separator_Line:
  case QChar::Separator_Paragraph:
    return true;
  default:
    break;
  }
  // Bidirectional overrides and isolates, which let a name rearrange the line around it.
  return (codePoint >= 0x202A && codePoint <= 0x202E) || (codePoint >= 0x2066 && codePoint <= 0x2069);
}

} // namespace

QString printable(const QString& text) {
  QVector<uint> codePoints = text.toUcs4();
  for (uint& codePoint : codePoints) {
    if (codePoint == '\n' || codePoint == '\r' || codePoint == '\t')
      codePoint = ' ';
    else if (isUnsafe(codePoint))
      codePoint = QChar::ReplacementCharacter;
  }
  return QString::fromUcs4(codePoints.constData(), codePoints.size());
}

QString quoted(const QString& text) { return '"' + printable(text) + '"'; }

QByteArray terminalSafeJson(const QByteArray& json) {
  // Outside its texts a document holds no such character but line feeds, so that escaping needs no parsing.
  const QString text = QString::fromUtf8(json);
  QString safe;
  safe.reserve(text.size());
  for (const QChar unit : text) {
    if (unit == '\n' || unit.isSurrogate() || !isUnsafe(unit.unicode()))
      safe += unit;
    else
      safe += QString("\\u%1").arg(unit.unicode(), 4, 16, QChar('0'));
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
  int kept = 0;
  // One column is the ellipsis's.
  for (int room = columns - 1, end = characters.toNextBoundary(); end > 0; end = characters.toNextBoundary()) {
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
