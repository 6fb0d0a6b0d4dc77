// Finds the map that a text on the command line means. Pure functions, any thread.
#pragma once

#include "host/CommandResult.h"
#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// The maps of `maps` whose name is `name`.
[[nodiscard]] QList<MapInfo> mapsNamed(const QList<MapInfo>& maps, const QString& name);

/// A UsageError that lists `matches`: `text` is the name, or the beginning of the identifier, of each of them.
[[nodiscard]] CommandResult ambiguity(const QString& text, const QList<MapInfo>& matches);

/// Sets `info` to the map of `maps` that `text` means: its identifier, its name if no other map has the same, or at
/// least the first eight digits of its identifier if no other begins with them. For a whole identifier that is not
/// listed, sets the identifier alone: the service decides about it. Returns a UsageError for any other text.
[[nodiscard]] CommandResult findMap(const QList<MapInfo>& maps, const QString& text, MapInfo& info);

} // namespace tarnwell
