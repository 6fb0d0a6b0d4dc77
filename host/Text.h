// Text for a terminal or a page: safe to print, aligned; sizes and dates. Pure functions, any thread.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace tarnwell {

/// terminal::printable() with blanks in place of line breaks and tabs.
[[nodiscard]] QString printable(const QString& text);
/// printable() in double quotes.
[[nodiscard]] QString quoted(const QString& text);

/// `json` with "\uXXXX" in place of the characters that terminal::printable() replaces.
[[nodiscard]] QByteArray terminalSafeJson(const QByteArray& json);

/// Columns that `text` takes on a terminal: two for a wide character, none for a combining mark.
[[nodiscard]] int displayWidth(const QString& text);
/// `text`; if it is wider than `columns`, cut between two characters and ended by an ellipsis.
[[nodiscard]] QString shortened(const QString& text, int columns);
/// `text` with blanks up to `columns` after it, or before it if `isRight`.
[[nodiscard]] QString padded(const QString& text, int columns, bool isRight);

/// "512 bytes", "24.3 KiB", "1.0 GiB".
[[nodiscard]] QString humanSize(qint64 bytes);
/// Local time to the minute, or "-" for an invalid date.
[[nodiscard]] QString localDate(const QDateTime& date);

} // namespace tarnwell
