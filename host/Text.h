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
/// `text`, cut to `columns` with an ellipsis when it is wider.
[[nodiscard]] QString shortened(const QString& text, int columns);

/// Rows of cells as aligned columns two blanks apart, a line each, the first row the headings. `rightAligned` names the
/// column of figures, -1 for none.
[[nodiscard]] QString table(const QList<QStringList>& rows, int rightAligned);

/// "512 B", "24.3 KiB", "1.0 GiB".
[[nodiscard]] QString humanSize(qint64 bytes);
/// Local time to the minute, or "-" for an invalid date.
[[nodiscard]] QString localDate(const QDateTime& date);

} // namespace tarnwell
