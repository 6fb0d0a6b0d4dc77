#include "host/MapCommands.h"

#include "host/Files.h"
#include "host/Gallery.h"
#include "host/Listing.h"
#include "host/MapLookup.h"
#include "host/Text.h"

#include <QtCore/QDir>
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

/// Logs in; the maps that `texts` name, each once, or all maps when there are no texts.
QList<MapInfo> fetchMaps(CommandRun& run, const QStringList& texts) {
  run.logIn();
  const QList<MapInfo> listed = run.list(true, false);
  QList<MapInfo> found;
  for (const QString& text : texts) {
    const MapInfo map = findMap(listed, text);
    if (!found.contains(map))
      found += map;
  }
  return texts.isEmpty() ? listed : found;
}

/// Whether the failure concerns one map alone, so that the others can be tried.
bool isAboutMap(const CommandRun& run, const CommandResult& failed) {
  const bool isOutcome = failed.status > ResultNotPremiumAccount && failed.status <= ResultMapRemoved;
  return isOutcome || (failed.status == ResultFailed && run.diagnosis().isAnswered);
}

/// "downloading the map", or "downloading the map, 3 of 20".
QString progressText(const QString& activity, int number, int count) {
  return count == 1 ? activity : QString("%1, %2 of %3").arg(activity).arg(number).arg(count);
}

/// Calls `each` for the only map.
template <typename Each> CommandResult forOneMap(MapInfo& map, Each each) {
  CommandResult one = each(map, 1);
  one.data = {{"maps", QJsonArray{one.data}}};
  return one;
}

/// Calls `each` for every map, with its number from 1 on. A failure that concerns this map alone does not stop the
/// others; the first failure decides about the result. `done`: a participle for messages, "downloaded".
template <typename Each>
CommandResult forEachMap(CommandRun& run, QList<MapInfo>& maps, const QString& done, Each each) {
  CommandResult all;
  QJsonArray records;
  QJsonArray failures;
  for (int i = 0; i < maps.size(); i++) {
    try {
      const CommandResult one = each(maps[i], i + 1);
      records += one.data;
      run.note(one.message);
    } catch (const CommandResult& failed) {
      run.note("tarnwell: " + failed.message);
      failures += QJsonObject{{"id", maps[i].mapID().toString(QUuid::WithoutBraces)},
                              {"name", maps[i].mapName()},
                              {"exitStatus", failed.status},
                              {"message", failed.message}};
      if (!all.failed())
        all = failed;
      if (!isAboutMap(run, failed))
        break;
    }
  }
  all.message = all.failed() ? QString("%1 %2 of %3 maps").arg(done).arg(records.size()).arg(maps.size())
                             : done + ' ' + mapCount(maps);
  all.data = {{"maps", records}, {"failures", failures}};
  return all;
}

/// The files in `folder` for `maps`, in their order: no two have the same name, whatever case the file system ignores.
QStringList chooseFiles(const QString& folder, const QList<MapInfo>& maps) {
  QStringList files;
  for (const MapInfo& map : maps) {
    const QString start = folder + '/' + fileNameFor(map.mapName());
    QString file = start + ".twlx";
    for (int copy = 1; files.contains(file, Qt::CaseInsensitive); copy++) {
      const QString number = copy == 1 ? QString() : QString(" %1").arg(copy);
      file = QString("%1 %2%3.twlx").arg(start, map.mapID().toString(QUuid::WithoutBraces), number);
    }
    files += file;
  }
  return files;
}

/// Removes from `maps` and `files` those whose file exists, and says so. Returns the files.
QStringList leaveExisting(const CommandRun& run, QList<MapInfo>& maps, QStringList& files) {
  QStringList left;
  for (auto i = files.size() - 1; i >= 0; i--) {
    if (!QFileInfo::exists(files[i]) && !QFileInfo(files[i]).isSymLink())
      continue;
    run.note(QString("left %1 as it is").arg(quoted(files[i])));
    left.prepend(files.takeAt(i));
    maps.removeAt(i);
  }
  return left;
}

/// Downloads `info` to `file`, "-" for standard output.
CommandResult download(CommandRun& run, const QString& activity, MapInfo& info, const QString& file) {
  run.perform({activity, "cannot download " + mapTitle(info), true},
              [&info](ITarnwellService& service) { return service.getMap(info); });
  CommandResult result;
  result.message = QString("downloaded %1, %2").arg(mapTitle(info), humanSize(info.mapContent().size()));
  result.data = mapToJson(info, false);
  result.data["bytes"] = info.mapContent().size();
  result = writeOutput(result, file, info.mapContent());
  info.setMapContent(QByteArray());
  return result;
}

/// Downloads the maps into `folder`, which is made if its parent exists.
CommandResult downloadInto(CommandRun& run, const QString& folder, QList<MapInfo>& maps) {
  if (!QFileInfo(folder).isDir() && !QDir().mkdir(folder))
    fail(LocalError, QString("cannot make the folder %1: %2").arg(quoted(folder), qt_error_string()),
         "-o takes a folder that exists or whose parent folder exists");
  QStringList files = chooseFiles(folder, maps);
  const QStringList left = run.isSet("overwrite") ? QStringList() : leaveExisting(run, maps, files);
  const auto downloadOne = [&](MapInfo& info, int number) {
    return download(run, progressText("downloading the map", number, static_cast<int>(maps.size())), info,
                    files[number - 1]);
  };
  if (left.isEmpty() && maps.size() == 1)
    return forOneMap(maps.first(), downloadOne);
  CommandResult result = forEachMap(run, maps, "downloaded", downloadOne);
  if (left.isEmpty())
    return result;
  result.data["left"] = QJsonArray::fromStringList(left);
  result.message += QString("; left %1 existing %2").arg(left.size()).arg(left.size() == 1 ? "file" : "files");
  if (!result.failed()) {
    result.status = LocalError;
    result.advice = "replace them with --overwrite, or name another folder with -o";
  }
  return result;
}

} // namespace

CommandResult listMaps(CommandRun& run) {
  const QString format = run.value("format");
  if (format != "table" && format != "tsv")
    fail(UsageError, QString("there is no format %1").arg(quoted(format)), "use table, tsv or --json");
  const bool isLite = run.isSet("lite");
  run.logIn();
  const QList<MapInfo> maps = run.list(isLite, run.isSet("published"));
  CommandResult result;
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
    fail(UsageError, isAll ? "--all takes no MAP" : "MAP is missing", "see 'tarnwell get --help'");
  const QString output = run.isSet("output") ? run.value("output") : "-";
  const bool isSeveral = isAll || run.arguments().size() > 1;
  const bool isFolder = QFileInfo(output).isDir() || output.endsWith('/') || isSeveral;
  if (isSeveral && output == "-")
    fail(UsageError, "several maps need a folder", "name the folder with -o");
  if (output == "-" && !run.isSet("output") && !run.isSet("json") && isatty(STDOUT_FILENO) != 0) {
    fail(UsageError, "a terminal cannot show the bytes of a map",
         "name a file with -o, or redirect the output; -o - prints them nevertheless");
  }
  QList<MapInfo> maps = fetchMaps(run, run.arguments());
  if (isFolder)
    return downloadInto(run, output, maps);
  return forOneMap(maps.first(),
                   [&](MapInfo& info, int) { return download(run, "downloading the map", info, output); });
}

CommandResult renameMap(CommandRun& run) {
  const QString newName = run.argument(1);
  if (newName.isEmpty())
    fail(UsageError, "a map needs a name, and NEWNAME is empty");
  MapInfo info = fetchMaps(run, {run.argument(0)}).first();
  run.perform({"renaming the map", "cannot rename " + mapTitle(info), false,
               "choose another NEWNAME, or rename or delete the other map first"},
              [&](ITarnwellService& service) { return service.renameMap(info, newName); });
  CommandResult result;
  result.message = QString("renamed %1 to %2").arg(mapTitle(info), quoted(newName));
  info.setMapName(newName);
  result.data["map"] = mapToJson(info, false);
  return result;
}

CommandResult deleteMaps(CommandRun& run) {
  QList<MapInfo> maps = fetchMaps(run, run.arguments());
  const auto deleteOne = [&](MapInfo& info, int number) {
    run.perform(
        {progressText("deleting the map", number, static_cast<int>(maps.size())), "cannot delete " + mapTitle(info)},
        [&info](ITarnwellService& service) { return service.deleteMap(info); });
    CommandResult one;
    one.message = "deleted " + mapTitle(info);
    one.data = mapToJson(info, false);
    return one;
  };
  return maps.size() == 1 ? forOneMap(maps.first(), deleteOne) : forEachMap(run, maps, "deleted", deleteOne);
}

CommandResult makeGallery(CommandRun& run) {
  run.logIn();
  const QList<MapInfo> maps = run.list(false, run.isSet("published"));
  CommandResult result;
  result.message = "made a gallery of " + mapCount(maps);
  result.data["count"] = maps.size();
  return writeOutput(result, run.argument(0), galleryPage(run.user(), maps));
}

} // namespace tarnwell
