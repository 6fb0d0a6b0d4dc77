// Text that a terminal shows instead of obeying it. Pure function, any thread.
#pragma once

#include <QtCore/QString>

namespace terminal {

/// `text` with everything that a terminal could act on as U+FFFD: control characters, line breaks, bidirectional
/// overrides, unpaired surrogates.
[[nodiscard]] QString printable(const QString& text);

} // namespace terminal
