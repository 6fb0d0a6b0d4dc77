#include "host/Commands.h"

#include "host/Files.h"
#include "host/Gallery.h"
#include "host/Listing.h"
#include "host/MapLookup.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>
#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tarnwell {

namespace {

/// The width in columns of the terminal that is standard output; 0 when it is no terminal.
int terminalWidth() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

/// Logs in and sets `found` to the maps that `texts` name, or to all maps when there are no texts.
CommandResult fetchMaps(CommandRun& run, const QStringList& texts, QList<MapInfo>& found) {
  QList<MapInfo> listed;
  CommandResult result = run.logIn();
  if (!result.failed())
    result = run.list(true, false, listed);
  for (int i = 0; i < texts.size() && !result.failed(); i++) {
    found += MapInfo();
    result = findMap(listed, texts[i], found.last());
  }
  if (texts.isEmpty())
    found = listed;
  return result;
}

/// Calls `each` for every map. A failure that concerns this map alone does not stop the others; the first failure is
/// the result. `done`: a participle for the message, "downloaded".
template <typename Each> CommandResult forEachMap(QList<MapInfo>& maps, const QString& done, Each each) {
  CommandResult all;
  QJsonArray records;
  QString message;
  for (MapInfo& map : maps) {
    CommandResult one = each(map);
    if (one.failed() && !all.failed()) {
      all.status = one.status;
      all.message = one.message;
      all.advice = one.advice;
    }
    if (one.failed() && (one.status < ResultNoAccess || one.status > ResultMapRemoved))
      break;
    if (maps.size() > 1)
      all.text += (one.failed() ? "tarnwell: " : "") + one.message + '\n';
    if (!one.failed())
      records += one.data;
    message = one.message;
    all.bytes = one.bytes;
  }
  all.data["maps"] = records;
  if (all.failed() && maps.size() > 1)
    all.message += QString("; %1 %2 of %3 maps").arg(done).arg(records.size()).arg(maps.size());
  else if (!all.failed())
    all.message = maps.size() == 1 ? message : done + ' ' + mapCount(maps);
  return all;
}

/// Downloads `info` to `file`, "-" for standard output.
CommandResult download(CommandRun& run, MapInfo& info, const QString& file) {
  CommandResult result =
      run.perform({"downloading the map", "GetMapContent_NEW_DESKTOP", "cannot download " + mapTitle(info)},
                  [&info](ITarnwellService& service) { return service.getMap(info); });
  if (result.failed())
    return result;
  result.message = QString("downloaded %1, %2").arg(mapTitle(info), humanSize(info.mapContent().size()));
  result.data = mapToJson(info, false);
  result.data["bytes"] = info.mapContent().size();
  result = writeOutput(result, file, info.mapContent());
  info.setMapContent(QByteArray());
  return result;
}

/// A file in `folder` for `info` whose name is not in `taken`. Adds its name to `taken`.
QString chooseFile(const QString& folder, const MapInfo& info, QStringList& taken) {
  QString name = fileNameFor(info.mapName());
  if (taken.contains(name, Qt::CaseInsensitive))
    name += ' ' + info.mapID().toString(QUuid::WithoutBraces);
  taken += name;
  return QString("%1/%2.twlx").arg(folder, name);
}

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
CommandResult prepare(const CommandRun& run, Upload& upload) {
  for (const auto& [one, other] : {std::pair{"thumbnail", "no-thumbnail"}, {"published", "unpublished"}}) {
    if (run.isSet(one) && run.isSet(other))
      return failure(UsageError, QString("--%1 and --%2 exclude each other").arg(one, other));
  }
  if (run.isSet("name") && run.value("name").isEmpty())
    return failure(UsageError, "a map needs a name, and --name is empty");
  upload.file = run.argument(0);
  upload.info.setMapName(run.isSet("name") ? run.value("name") : QFileInfo(upload.file).completeBaseName());
  CommandResult result = checkMapFile(upload.file, upload.size);
  if (!result.failed() && run.isSet("thumbnail"))
    result = readFile(run.value("thumbnail"), upload.thumbnail);
  return result;
}

/// Sets `upload.stored` to the map of `listed` that the MAP argument or, without it, the new map's name means.
CommandResult findStored(const CommandRun& run, const QList<MapInfo>& listed, Upload& upload) {
  const QString map = run.argument(1);
  if (!map.isEmpty())
    return findMap(listed, map, upload.stored);
  const QList<MapInfo> matches = mapsNamed(listed, upload.info.mapName());
  if (matches.size() > 1)
    return ambiguity(upload.info.mapName(), matches);
  if (!matches.isEmpty())
    upload.stored = matches.first();
  return {};
}

/// Copies from the stored record to the upload all values for which no option is given.
CommandResult keepStored(CommandRun& run, Upload& upload) {
  MapInfo& info = upload.info;
  QList<MapInfo> listed;
  CommandResult result;
  const bool keepsThumbnail = !upload.stored.mapID().isNull() && !run.isSet("thumbnail") && !run.isSet("no-thumbnail");
  if (keepsThumbnail)
    result = run.list(false, false, listed);
  for (const MapInfo& map : listed) {
    if (map.mapID() == upload.stored.mapID())
      upload.thumbnail = map.mapThumbnail();
  }
  info.setMapID(upload.stored.mapID());
  info.setVersion(upload.stored.version());
  if (!run.isSet("name") && !upload.stored.mapName().isEmpty())
    info.setMapName(upload.stored.mapName());
  info.setMapDescription(run.isSet("description") ? run.value("description") : upload.stored.mapDescription());
  info.setMapPublished(run.isSet("published") || (upload.stored.mapPublished() && !run.isSet("unpublished")));
  return result;
}

/// Lists the maps again after an upload that failed. Returns one clause: whether the service has stored the map.
QString checkWhetherStored(CommandRun& run, const QList<MapInfo>& before, const Upload& upload) {
  constexpr double limit = 10; // seconds
  QList<MapInfo> now;
  run.limitTime(limit);
  if (run.list(true, false, now).failed())
    return "whether the map is stored is not known";
  const auto isNew = [&before](const MapInfo& map) {
    return std::none_of(before.begin(), before.end(), [&map](const MapInfo& old) {
      return old.mapID() == map.mapID() && qFuzzyCompare(old.version(), map.version());
    });
  };
  for (const MapInfo& map : now) {
    if (upload.stored.mapID().isNull() ? map.mapName() == upload.info.mapName() : map.mapID() == upload.stored.mapID())
      return isNew(map) ? "the map is stored all the same" : "the stored map is as before";
  }
  return "the map is not stored";
}

} // namespace

CommandResult listMaps(CommandRun& run) {
  const QString format = run.value("format");
  if (format != "table" && format != "tsv")
    return failure(UsageError, QString("there is no format %1").arg(quoted(format)), "use table, tsv or --json");
  const bool isLite = run.isSet("lite");
  QList<MapInfo> maps;
  CommandResult result = run.logIn();
  if (!result.failed())
    result = run.list(isLite, run.isSet("published"), maps);
  if (result.failed())
    return result;
  result.message = mapCount(maps);
  if (format == "tsv")
    result.text = mapTabSeparated(maps, !isLite);
  else if (!maps.isEmpty())
    result.text = mapTable(maps, !isLite, terminalWidth());
  result.data["maps"] = mapsToJson(maps, !isLite);
  return result;
}

CommandResult getMaps(CommandRun& run) {
  const bool isAll = run.isSet("all");
  if (run.arguments().isEmpty() != isAll)
    return failure(UsageError, isAll ? "--all takes no MAP" : "MAP is missing", "see 'tarnwell get --help'");
  const QString output = run.isSet("output") ? run.value("output") : "-";
  const bool isFolder = QFileInfo(output).isDir();
  if (!isFolder && (isAll || run.arguments().size() > 1))
    return failure(UsageError, "several maps need an existing folder", "name the folder with -o");
  if (output == "-" && !run.isSet("output") && !run.isSet("json") && isatty(STDOUT_FILENO) != 0) {
    return failure(UsageError, "a terminal cannot show the bytes of a map",
                   "name a file with -o, or redirect the output; -o - prints them nevertheless");
  }
  QList<MapInfo> maps;
  CommandResult result = fetchMaps(run, run.arguments(), maps);
  if (result.failed())
    return result;
  QStringList taken;
  return forEachMap(maps, "downloaded", [&](MapInfo& info) {
    return download(run, info, isFolder ? chooseFile(output, info, taken) : output);
  });
}

CommandResult saveMap(CommandRun& run) {
  Upload upload;
  QList<MapInfo> listed;
  CommandResult result = prepare(run, upload);
  if (!result.failed())
    result = run.logIn();
  if (!result.failed())
    result = run.list(true, false, listed);
  if (!result.failed())
    result = findStored(run, listed, upload);
  if (result.failed())
    return result;
  const bool isForced = run.isSet("force");
  const bool isListed = std::any_of(listed.begin(), listed.end(),
                                    [&upload](const MapInfo& map) { return map.mapID() == upload.stored.mapID(); });
  const QString cannot = QString("cannot save %1 as ").arg(quoted(upload.file));
  if (isListed && !isForced)
    return failure(ResultFileExists, cannot + mapTitle(upload.stored));
  result = keepStored(run, upload);
  if (result.failed())
    return result;
  MapInfo& info = upload.info;
  result = run.perform(
      {"uploading the map", "SaveMap_NEW_DESKTOP", cannot + mapTitle(info)},
      [&](ITarnwellService& service) { return service.saveMap(upload.file, info, upload.thumbnail, isForced); },
      upload.size / 3 * 4);
  if (result.status == ResultFailed || result.status >= FirstSignalStatus)
    result.message += "; " + checkWhetherStored(run, listed, upload);
  if (result.failed())
    return result;
  const int saved = info.mapContent().size();
  if (saved != upload.size) {
    return failure(LocalError,
                   QString("%1 changed while it was saved: it had %2 bytes, and %3 are stored")
                       .arg(quoted(upload.file), QString::number(upload.size), QString::number(saved)),
                   "save it again with --force");
  }
  result.message = QString("saved %1, %2").arg(mapTitle(info), humanSize(saved));
  result.data["map"] = mapToJson(info, false);
  result.data["bytes"] = saved;
  return result;
}

CommandResult renameMap(CommandRun& run) {
  const QString newName = run.argument(1);
  if (newName.isEmpty())
    return failure(UsageError, "a map needs a name, and NEWNAME is empty");
  QList<MapInfo> maps;
  CommandResult result = fetchMaps(run, {run.argument(0)}, maps);
  if (result.failed())
    return result;
  MapInfo& info = maps.first();
  result = run.perform({"renaming the map", "RenameDesktopMap", "cannot rename " + mapTitle(info)},
                       [&](ITarnwellService& service) { return service.renameMap(info, newName); });
  if (result.failed())
    return result;
  result.message = QString("renamed %1 to %2").arg(mapTitle(info), quoted(newName));
  info.setMapName(newName);
  result.data["map"] = mapToJson(info, false);
  return result;
}

CommandResult deleteMaps(CommandRun& run) {
  QList<MapInfo> maps;
  CommandResult result = fetchMaps(run, run.arguments(), maps);
  if (result.failed())
    return result;
  return forEachMap(maps, "deleted", [&run](MapInfo& info) {
    CommandResult one = run.perform({"deleting the map", "DeleteDesktopMap", "cannot delete " + mapTitle(info)},
                                    [&info](ITarnwellService& service) { return service.deleteMap(info); });
    if (!one.failed())
      one.message = "deleted " + mapTitle(info);
    one.data = mapToJson(info, false);
    return one;
  });
}

CommandResult makeGallery(CommandRun& run) {
  QList<MapInfo> maps;
  CommandResult result = run.logIn();
  if (!result.failed())
    result = run.list(false, run.isSet("published"), maps);
  if (result.failed())
    return result;
  result.message = "made a gallery of " + mapCount(maps);
  result.data["count"] = maps.size();
  return writeOutput(result, run.argument(0), galleryPage(run.user(), maps));
}

} // namespace tarnwell
