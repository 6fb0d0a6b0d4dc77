// Finds the map that a text on the command line means. Pure functions, any thread.
#pragma once

#include "host/CommandResult.h"
#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// The maps of `maps` whose name is `name`.
[[nodiscard]] QList<MapInfo> mapsNamed(const QList<MapInfo>& maps, const QString& name);

/// Fails with a UsageError that lists `matches`, which all fit `text`.
[[noreturn]] void failAmbiguous(const QString& text, const QList<MapInfo>& matches);

/// The one map of `maps` whose name or identifier is `text`, or whose identifier begins with it, when it has at least
/// eight characters. For a whole identifier that fits no map, a record with the identifier alone: the service decides
/// about it. Fails with a UsageError when no map or more than one fits.
[[nodiscard]] MapInfo findMap(const QList<MapInfo>& maps, const QString& text);

} // namespace tarnwell
