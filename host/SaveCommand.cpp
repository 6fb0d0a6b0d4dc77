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
  /// As given, and where the plug-in finds it.
  QString name;
  QString file;
  qint64 size = 0;
  MapInfo info;
  QByteArray thumbnail;
  /// The record that it overwrites, as listed. Its identifier is null when there is none.
  MapInfo stored;
};

[[noreturn]] void failNameless() {
  fail(UsageError, "a map needs a name, and this one has none", "name it with --name");
}

/// Checks the options and reads the files. Sends nothing. `copy`: for a map that comes from standard input.
Upload prepare(const CommandRun& run, QTemporaryFile& copy) {
  for (const auto& [one, other] : {std::pair{"thumbnail", "no-thumbnail"}, {"published", "unpublished"}}) {
    if (run.isSet(one) && run.isSet(other))
      fail(UsageError, QString("--%1 and --%2 exclude each other").arg(one, other));
  }
  Upload upload;
  upload.name = run.argument(0);
  const bool isInput = upload.name == "-";
  const QString ofFile = isInput ? QString() : QFileInfo(upload.name).completeBaseName();
  const QString name = run.isSet("name") ? run.value("name") : ofFile;
  if (name.isEmpty() && (run.isSet("name") || isInput))
    failNameless();
  upload.info.setMapName(name);
  upload.file = isInput ? copyStandardInput(copy) : upload.name;
  upload.size = checkMapFile(upload.file);
  if (name.isEmpty() && run.argument(1).isEmpty())
    failNameless();
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
  if (info.mapName().isEmpty())
    failNameless();
  info.setMapDescription(run.isSet("description") ? run.value("description") : upload.stored.mapDescription());
  info.setMapPublished(run.isSet("published") || (upload.stored.mapPublished() && !run.isSet("unpublished")));
}

/// After an upload that failed: one clause that says whether the service has stored the map. Lists the maps again,
/// unless it is certain that the service has not.
QString whatIsStored(CommandRun& run, const QList<MapInfo>& before, const Upload& upload) try {
  const bool isNew = upload.stored.mapID().isNull();
  const QString no = isNew ? "the map is not stored" : "the stored map is as before";
  if (!run.isRequestSent() || run.diagnosis().isRefused)
    return no;
  constexpr double limit = 10; // seconds
  run.limitTime(limit);
  const auto isThatOf = [](const MapInfo& left) {
    return [&left](const MapInfo& right) {
      return left.mapID() == right.mapID() && qFuzzyCompare(left.version(), right.version());
    };
  };
  for (const MapInfo& map : run.list(true, false)) {
    const bool isMeant = isNew ? map.mapName() == upload.info.mapName() : map.mapID() == upload.stored.mapID();
    if (isMeant && std::none_of(before.begin(), before.end(), isThatOf(map)))
      return "the map is stored all the same";
  }
  return no + " so far: the service may still be at work, see 'tarnwell list' later";
} catch (const CommandResult&) {
  return "whether the map is stored is not known";
}

} // namespace

CommandResult saveMap(CommandRun& run) {
  QTemporaryFile copy;
  Upload upload = prepare(run, copy);
  MapInfo& info = upload.info;
  run.logIn();
  const QList<MapInfo> listed = run.list(true, false);
  upload.stored = findStored(run, listed, info.mapName());
  const bool isForced = run.isSet("force");
  const QString cannot = QString("cannot save %1 as ").arg(quoted(upload.name));
  if (listed.contains(upload.stored) && !isForced)
    fail(ResultFileExists, cannot + mapTitle(upload.stored));
  keepStored(run, upload);
  try {
    run.perform(
        {"uploading the map", cannot + mapTitle(info)},
        [&](ITarnwellService& service) { return service.saveMap(upload.file, info, upload.thumbnail, isForced); },
        (upload.size + upload.thumbnail.size()) / 3 * 4);
  } catch (CommandResult& failed) {
    if (failed.status == ResultFailed || failed.status >= FirstSignalStatus)
      failed.message += "; " + whatIsStored(run, listed, upload);
    throw;
  }
  const auto saved = static_cast<int>(info.mapContent().size());
  if (saved != upload.size) {
    fail(LocalError,
         QString("%1 changed while it was saved: it had %2 bytes, and %3 are stored")
             .arg(quoted(upload.name), QString::number(upload.size), QString::number(saved)),
         "save it again with --force");
  }
  CommandResult result;
  result.message = QString("saved %1, %2").arg(mapTitle(info), humanSize(saved));
  result.data["map"] = mapToJson(info, false);
  result.data["bytes"] = saved;
  return result;
}

} // namespace tarnwell
