// Finds the map that a text on the command line means. Pure functions, any thread.
#pragma once

#include "host/CommandResult.h"
#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// The maps of `maps` whose name is `name`.
[[nodiscard]] QList<MapInfo> mapsNamed(const QList<MapInfo>& maps, const QString& name);

/// Fails with a UsageError that lists `matches`: `text` is the name, or the beginning of the identifier, of each of
/// them.
[[noreturn]] void failAmbiguous(const QString& text, const QList<MapInfo>& matches);

/// The map of `maps` that `text` means: its identifier, its name if no other map has the same, or at
/// least the first eight digits of its identifier if no other begins with them. For a whole identifier that is not
/// listed, a record with the identifier alone: the service decides about it. Fails with a UsageError for any other
/// text.
[[nodiscard]] MapInfo findMap(const QList<MapInfo>& maps, const QString& text);

} // namespace tarnwell
