// An HTML page of the maps' previews. Pure function, any thread.
#pragma once

#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// A UTF-8 HTML page of `user`'s maps, the latest first. It needs no other file and runs no script: previews are data:
/// URIs, texts are escaped. In place of a preview that is missing, broken or of an unknown format it shows the first
/// letter of the map's name.
[[nodiscard]] QByteArray galleryPage(const QString& user, QList<MapInfo> maps);

} // namespace tarnwell
