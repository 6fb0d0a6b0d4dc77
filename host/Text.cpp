#include "host/Text.h"

#include <QtCore/QVector>
#include <algorithm>
#include <utility>

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

struct Range {
  uint first, last;
};

/// What terminals draw over two columns: East Asian scripts and forms, and pictographs.
constexpr Range wideRanges[] = {{0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xAC00, 0xD7A3},
                                {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},
                                {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

int widthOf(uint codePoint) {
  switch (QChar::category(codePoint)) {
  case QChar::Mark_NonSpacing:
  case QChar::Mark_Enclosing:
  case QChar::Other_Format:
    return 0;
  default:
    break;
  }
  const bool wide = std::any_of(std::begin(wideRanges), std::end(wideRanges), [codePoint](const Range& range) {
    return codePoint >= range.first && codePoint <= range.last;
  });
  return wide ? 2 : 1;
}

QString spaces(int count) { return QString(std::max(count, 0), ' '); }

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
  int width = 0;
  for (const uint codePoint : text.toUcs4())
    width += widthOf(codePoint);
  return width;
}

QString shortened(const QString& text, int columns) {
  if (displayWidth(text) <= columns)
    return text;
  const QVector<uint> codePoints = text.toUcs4();
  int kept = 0;
  // One column is the ellipsis's.
  for (int width = 1; kept < codePoints.size(); kept++) {
    width += widthOf(codePoints[kept]);
    if (width > columns)
      break;
  }
  return QString::fromUcs4(codePoints.constData(), kept) + QChar(0x2026);
}

QString table(const QList<QStringList>& rows, int rightAligned) {
  QVector<int> widths;
  for (const QStringList& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (int column = 0; column < row.size(); column++)
      widths[column] = std::max(widths[column], displayWidth(row[column]));
  }
  QString text;
  for (const QStringList& row : rows) {
    for (int column = 0; column < row.size(); column++) {
      const QString padding = spaces(widths[column] - displayWidth(row[column]));
      const bool isLast = column + 1 == row.size();
      text += column == rightAligned ? padding + row[column] : row[column] + (isLast ? QString() : padding);
      text += isLast ? "\n" : "  ";
    }
  }
  return text;
}

QString humanSize(qint64 bytes) {
  if (bytes < 1024)
    return QString("%1 B").arg(bytes);
  static const char* const units[] = {"KiB", "MiB", "GiB"};
  double size = static_cast<double>(bytes) / 1024;
  size_t unit = 0;
  // 1023.95 would be rounded to 1024.0.
  for (; size >= 1023.95 && unit + 1 < std::size(units); unit++)
    size /= 1024;
  return QString("%1 %2").arg(QString::number(size, 'f', 1), units[unit]);
}

QString localDate(const QDateTime& date) {
  return date.isValid() ? date.toLocalTime().toString("yyyy-MM-dd HH:mm") : QString("-");
}

} // namespace tarnwell
