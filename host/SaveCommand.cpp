#include "host/SaveCommand.h"

#include "host/Files.h"
#include "host/Listing.h"
#include "host/MapLookup.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>
#include <algorithm>

namespace tarnwell {

namespace {

/// A save.
struct Upload {
  QString file;
  qint64 size = 0;
  MapInfo info;
  QByteArray thumbnail;
  /// The record that it overwrites, as listed. Its identifier is null when there is none.
  MapInfo stored;
};

/// Checks the options and reads the files. Sends nothing.
Upload prepare(const CommandRun& run) {
  for (const auto& [one, other] : {std::pair{"thumbnail", "no-thumbnail"}, {"published", "unpublished"}}) {
    if (run.isSet(one) && run.isSet(other))
      fail(UsageError, QString("--%1 and --%2 exclude each other").arg(one, other));
  }
  if (run.isSet("name") && run.value("name").isEmpty())
    fail(UsageError, "a map needs a name, and --name is empty");
  Upload upload;
  upload.file = run.argument(0);
  upload.info.setMapName(run.isSet("name") ? run.value("name") : QFileInfo(upload.file).completeBaseName());
  upload.size = checkMapFile(upload.file);
  if (run.isSet("thumbnail"))
    upload.thumbnail = readFile(run.value("thumbnail"));
  return upload;
}

/// The map of `listed` that the MAP argument or, without it, the new map's name means.
MapInfo findStored(const CommandRun& run, const QList<MapInfo>& listed, const QString& name) {
  if (!run.argument(1).isEmpty())
    return findMap(listed, run.argument(1));
  const QList<MapInfo> matches = mapsNamed(listed, name);
  if (matches.size() > 1)
    failAmbiguous(name, matches);
  return matches.value(0);
}

/// Copies from the stored record to the upload all values for which no option is given.
void keepStored(CommandRun& run, Upload& upload) {
  MapInfo& info = upload.info;
  if (!upload.stored.mapID().isNull() && !run.isSet("thumbnail") && !run.isSet("no-thumbnail")) {
    for (const MapInfo& map : run.list(false, false)) {
      if (map.mapID() == upload.stored.mapID())
        upload.thumbnail = map.mapThumbnail();
    }
  }
  info.setMapID(upload.stored.mapID());
  info.setVersion(upload.stored.version());
  if (!run.isSet("name") && !upload.stored.mapName().isEmpty())
    info.setMapName(upload.stored.mapName());
  info.setMapDescription(run.isSet("description") ? run.value("description") : upload.stored.mapDescription());
  info.setMapPublished(run.isSet("published") || (upload.stored.mapPublished() && !run.isSet("unpublished")));
}

/// Lists the maps again after an upload that failed. Returns one clause: whether the service has stored the map.
QString checkWhetherStored(CommandRun& run, const QList<MapInfo>& before, const Upload& upload) try {
  constexpr double limit = 10; // seconds
  run.limitTime(limit);
  const auto isNew = [&before](const MapInfo& map) {
    return std::none_of(before.begin(), before.end(), [&map](const MapInfo& old) {
      return old.mapID() == map.mapID() && qFuzzyCompare(old.version(), map.version());
    });
  };
  for (const MapInfo& map : run.list(true, false)) {
    if (upload.stored.mapID().isNull() ? map.mapName() == upload.info.mapName() : map.mapID() == upload.stored.mapID())
      return isNew(map) ? "the map is stored all the same" : "the stored map is as before";
  }
  return "the map is not stored";
} catch (const CommandResult&) {
  return "whether the map is stored is not known";
}

} // namespace

CommandResult saveMap(CommandRun& run) {
  Upload upload = prepare(run);
  MapInfo& info = upload.info;
  run.logIn();
  const QList<MapInfo> listed = run.list(true, false);
  upload.stored = findStored(run, listed, info.mapName());
  const bool isForced = run.isSet("force");
  const bool isListed = std::any_of(listed.begin(), listed.end(),
                                    [&upload](const MapInfo& map) { return map.mapID() == upload.stored.mapID(); });
  const QString cannot = QString("cannot save %1 as ").arg(quoted(upload.file));
  if (isListed && !isForced)
    fail(ResultFileExists, cannot + mapTitle(upload.stored));
  keepStored(run, upload);
  try {
    run.perform(
        {"uploading the map", "SaveMap_NEW_DESKTOP", cannot + mapTitle(info)},
        [&](ITarnwellService& service) { return service.saveMap(upload.file, info, upload.thumbnail, isForced); },
        upload.size / 3 * 4);
  } catch (CommandResult& failed) {
    if (failed.status == ResultFailed || failed.status >= FirstSignalStatus)
      failed.message += "; " + checkWhetherStored(run, listed, upload);
    throw;
  }
  const int saved = info.mapContent().size();
  if (saved != upload.size) {
    fail(LocalError,
         QString("%1 changed while it was saved: it had %2 bytes, and %3 are stored")
             .arg(quoted(upload.file), QString::number(upload.size), QString::number(saved)),
         "save it again with --force");
  }
  CommandResult result;
  result.message = QString("saved %1, %2").arg(mapTitle(info), humanSize(saved));
  result.data["map"] = mapToJson(info, false);
  result.data["bytes"] = saved;
  return result;
}

} // namespace tarnwell
