#include "host/Commands.h"

#include "host/Files.h"
#include "host/Gallery.h"
#include "host/Listing.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>
#include <unistd.h>

namespace tarnwell {

namespace {

/// Logs in and sets `maps` to the user's maps, with previews unless `isLite`.
Outcome fetchList(Session& session, bool isLite, QList<MapInfo>& maps) {
  Outcome loggedIn = session.logIn();
  if (loggedIn.failed())
    return loggedIn;
  const bool isPublished = session.isSet("published");
  const int result = session.during("listing maps", [&](ITarnwellService& service) {
    return isLite ? service.getDesktopMapsListLite(isPublished, maps) : service.getDesktopMapsList(isPublished, maps);
  });
  return result == ResultOk ? Outcome() : failure(result, "cannot list the maps");
}

/// Logs in and sets `info` to the map that the argument at `position` names.
Outcome fetchMap(Session& session, int position, MapInfo& info) {
  Outcome loggedIn = session.logIn();
  return loggedIn.failed() ? loggedIn : session.find(session.argument(position), info);
}

/// A failure after a login that succeeded is rarely the network's.
constexpr char noSuchMap[] = "see with 'tarnwell list' whether the map is there, then try again";

/// Logs in and carries out `call` for the map that the first argument names. `verb` is for "cannot VERB".
template <typename Call>
Outcome withMap(Session& session, const char* activity, const char* verb, MapInfo& info, Call call) {
  Outcome outcome = fetchMap(session, 0, info);
  if (outcome.failed())
    return outcome;
  const int result = session.during(activity, call);
  if (result != ResultOk)
    return failure(result, QString("cannot %1 %2").arg(verb, mapTitle(info)), result == ResultFailed ? noSuchMap : "");
  outcome.data["map"] = mapToJson(info, false);
  return outcome;
}

} // namespace

Outcome listMaps(Session& session) {
  const bool isLite = session.isSet("lite");
  QList<MapInfo> maps;
  Outcome outcome = fetchList(session, isLite, maps);
  if (outcome.failed())
    return outcome;
  outcome.message = mapCount(maps);
  if (!maps.isEmpty())
    outcome.text = mapTable(maps, !isLite);
  outcome.data["maps"] = mapsToJson(maps, !isLite);
  return outcome;
}

Outcome getMap(Session& session) {
  const bool isFile = session.isSet("output");
  if (!isFile && !session.isSet("json") && isatty(STDOUT_FILENO) != 0) {
    return failure(UsageError, "a map's bytes are not for a terminal",
                   "name a file with -o, or redirect the output; -o - prints the map all the same");
  }
  MapInfo info;
  Outcome outcome = withMap(session, "downloading the map", "download", info,
                            [&](ITarnwellService& service) { return service.getMap(info); });
  if (outcome.failed())
    return outcome;
  outcome.message = QString("downloaded %1, %2").arg(mapTitle(info), humanSize(info.mapContent().size()));
  outcome.data["bytes"] = info.mapContent().size();
  return deliver(outcome, isFile ? session.value("output") : QString("-"), info.mapContent());
}

Outcome saveMap(Session& session) {
  const QString file = session.argument(0);
  const QFileInfo source(file);
  // The library would upload a file that it cannot read as an empty map.
  if (source.isFile() && !source.isReadable())
    return failure(LocalError, QString("cannot read %1").arg(quoted(file)), "check its permissions");
  QByteArray thumbnail;
  if (session.isSet("thumbnail")) {
    Outcome read = readFile(session.value("thumbnail"), thumbnail);
    if (read.failed())
      return read;
  }
  MapInfo info;
  info.setMapName(source.completeBaseName());
  Outcome outcome = session.argument(1).isEmpty() ? session.logIn() : fetchMap(session, 1, info);
  if (outcome.failed())
    return outcome;
  if (session.isSet("name"))
    info.setMapName(session.value("name"));
  if (session.isSet("description"))
    info.setMapDescription(session.value("description"));
  if (session.isSet("published"))
    info.setMapPublished(true);
  const int result = session.during("uploading the map", [&](ITarnwellService& service) {
    return service.saveMap(file, info, thumbnail, session.isSet("force"));
  });
  if (result != ResultOk)
    return failure(result, QString("cannot save %1 as %2").arg(quoted(file), mapTitle(info)));
  outcome.message = QString("saved %1, %2").arg(mapTitle(info), humanSize(info.mapContent().size()));
  outcome.data["map"] = mapToJson(info, false);
  outcome.data["bytes"] = info.mapContent().size();
  return outcome;
}

Outcome renameMap(Session& session) {
  MapInfo info;
  const QString newName = session.argument(1);
  Outcome outcome = withMap(session, "renaming the map", "rename", info,
                            [&](ITarnwellService& service) { return service.renameMap(info, newName); });
  if (outcome.failed())
    return outcome;
  outcome.message = QString("renamed %1 to %2").arg(mapTitle(info), quoted(newName));
  info.setMapName(newName);
  outcome.data["map"] = mapToJson(info, false);
  return outcome;
}

Outcome deleteMap(Session& session) {
  MapInfo info;
  Outcome outcome = withMap(session, "deleting the map", "delete", info,
                            [&](ITarnwellService& service) { return service.deleteMap(info); });
  if (!outcome.failed())
    outcome.message = "deleted " + mapTitle(info);
  return outcome;
}

Outcome makeGallery(Session& session) {
  QList<MapInfo> maps;
  Outcome outcome = fetchList(session, false, maps);
  if (outcome.failed())
    return outcome;
  outcome.message = "made a gallery of " + mapCount(maps);
  outcome.data["count"] = maps.size();
  return deliver(outcome, session.argument(0), galleryPage(session.value("user"), maps));
}

} // namespace tarnwell
