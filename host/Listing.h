// Map records as tables for people and as JSON or tab-separated lines for programs. Pure functions, any thread.
#pragma once

#include "service/MapInfo.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QString>

namespace tarnwell {

/// A map as `"Name" {identifier}`; without the name or the identifier if it has none.
[[nodiscard]] QString mapTitle(const MapInfo& map);

/// "1 map", "3 maps".
[[nodiscard]] QString mapCount(const QList<MapInfo>& maps);

/// One line per map below headings, with the previews' sizes if `hasPreviews`. `width`: columns of the terminal, 0 for
/// no limit. A table that is too wide is made narrower in this order: identifiers are cut to eight digits, which
/// commands accept too; authors and then names are cut; whole columns are left out.
[[nodiscard]] QString mapTable(const QList<MapInfo>& maps, bool hasPreviews, int width);

/// The same for programs: headings and cells separated by tabs, dates in ISO 8601 and UTC, sizes in bytes.
[[nodiscard]] QString mapTabSeparated(const QList<MapInfo>& maps, bool hasPreviews);

/// Unchanged texts; the date in ISO 8601 and UTC, null when invalid; the version, null when not known; if `hasPreview`,
/// the preview in base64.
[[nodiscard]] QJsonObject mapToJson(const MapInfo& map, bool hasPreview);
[[nodiscard]] QJsonArray mapsToJson(const QList<MapInfo>& maps, bool hasPreviews);

} // namespace tarnwell
