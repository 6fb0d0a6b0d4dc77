#include "terminal/Printable.h"

#include <QtCore/QRegularExpression>

namespace terminal {

QString printable(const QString& text) {
  static const QRegularExpression unsafe("[\\p{Cc}\\p{Cs}\\p{Zl}\\p{Zp}\\x{202A}-\\x{202E}\\x{2066}-\\x{2069}]");
  // Decoding replaces unpaired surrogates, which the expression would not accept.
  return QString::fromUtf8(text.toUtf8()).replace(unsafe, QChar(QChar::ReplacementCharacter));
}

} // namespace terminal
