// Text that a terminal shows and does not obey. Pure functions, any thread.
#pragma once

#include <QtCore/QString>

#include <string>

namespace terminal {

/// Whether a terminal may act on this code point instead of showing it: a control character, a line or paragraph
/// separator, an unpaired surrogate, or a bidirectional override or isolate, with which a name rearranges its line.
inline bool isUnsafe(char32_t codePoint) {
  switch (QChar::category(codePoint)) {
  case QChar::Other_Control:
  case QChar::Other_Surrogate:
  case QChar::Separator_Line:
  case QChar::Separator_Paragraph:
    return true;
  default:
    return (codePoint >= 0x202A && codePoint <= 0x202E) || (codePoint >= 0x2066 && codePoint <= 0x2069);
  }
}

/// `text` with U+FFFD in place of each unsafe code point.
inline QString printable(const QString& text) {
  std::u32string codePoints = text.toStdU32String();
  for (char32_t& codePoint : codePoints) {
    if (isUnsafe(codePoint))
      codePoint = QChar::ReplacementCharacter;
  }
  return QString::fromStdU32String(codePoints);
}

} // namespace terminal
