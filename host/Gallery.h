// An HTML page of the maps' previews. Pure function, any thread.
#pragma once

#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// A UTF-8 HTML page of `user`'s maps, latest first, that needs no other file and runs no script: previews as data:
/// URIs, texts escaped. A preview that is no image of a known kind becomes a coloured initial.
[[nodiscard]] QByteArray galleryPage(const QString& user, QList<MapInfo> maps);

} // namespace tarnwell
