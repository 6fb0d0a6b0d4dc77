// Text as people read it on a terminal or a page: safe to print, aligned, sizes and dates. Pure functions, any thread.
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace tarnwell {

/// `text` without anything that a terminal would obey instead of show: control characters, line breaks, bidirectional
/// overrides and unpaired surrogates become blanks or U+FFFD.
[[nodiscard]] QString printable(const QString& text);
/// printable() in double quotes.
[[nodiscard]] QString quoted(const QString& text);

/// A JSON document whose texts a terminal can show: what QJsonDocument leaves raw of the same characters, escaped.
[[nodiscard]] QByteArray terminalSafeJson(const QByteArray& json);

/// Columns that `text` takes on a terminal: wide characters two, combining marks none.
[[nodiscard]] int displayWidth(const QString& text);
/// `text`, cut between two characters to `columns`, with an ellipsis, when it is wider.
[[nodiscard]] QString shortened(const QString& text, int columns);
/// `text` with blanks up to `columns`, behind it or before it.
[[nodiscard]] QString padded(const QString& text, int columns, bool isRight);

/// "512 bytes", "24.3 KiB", "1.0 GiB".
[[nodiscard]] QString humanSize(qint64 bytes);
/// Local time to the minute, or "-" for an invalid date.
[[nodiscard]] QString localDate(const QDateTime& date);

} // namespace tarnwell
