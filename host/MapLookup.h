// Which stored map a text on the command line means. Pure functions, any thread.
#pragma once

#include "host/CommandResult.h"
#include "service/MapInfo.h"

#include <QtCore/QList>

namespace tarnwell {

/// The maps of `maps` whose name is `name`.
[[nodiscard]] QList<MapInfo> mapsNamed(const QList<MapInfo>& maps, const QString& name);

/// A UsageError that lists `matches`, which all have the name or the beginning of the identifier `text`.
[[nodiscard]] CommandResult ambiguous(const QString& text, const QList<MapInfo>& matches);

/// Sets `info` to the map of `maps` that `text` means: by its identifier, by a name that no other has, or by at least
/// eight digits with which no other identifier begins. A whole identifier that is not listed is taken as it is, with
/// the rest of `info` unchanged: the service's answer about it counts. A UsageError for anything else.
[[nodiscard]] CommandResult findMap(const QList<MapInfo>& maps, const QString& text, MapInfo& info);

} // namespace tarnwell
