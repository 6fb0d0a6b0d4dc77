// Map records as people and as programs read them. Pure functions, any thread.
#pragma once

#include "service/MapInfo.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

namespace tarnwell {

/// A map as `"Name" {identifier}`, or the one of them that it has.
[[nodiscard]] QString mapTitle(const MapInfo& map);

/// "1 map", "3 maps".
[[nodiscard]] QString mapCount(const QList<MapInfo>& maps);

/// One line per map below headings, with the previews' sizes if `hasPreviews`, in at most `width` columns; 0 for no
/// limit. Where the width does not suffice, identifiers are cut to the eight digits that commands accept as well, then
/// names and authors, and in the end whole columns are left out.
[[nodiscard]] QString mapTable(const QList<MapInfo>& maps, bool hasPreviews, int width);

/// The same for programs: headings and cells separated by tabulators, dates in ISO 8601 and UTC, sizes in bytes.
[[nodiscard]] QString mapTabSeparated(const QList<MapInfo>& maps, bool hasPreviews);

/// Texts as they are, the date in ISO 8601 and UTC or null, the version null while not known, the preview in base64.
[[nodiscard]] QJsonObject mapToJson(const MapInfo& map, bool hasPreview);
[[nodiscard]] QJsonArray mapsToJson(const QList<MapInfo>& maps, bool hasPreviews);

} // namespace tarnwell
