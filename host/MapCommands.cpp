#include "host/MapCommands.h"

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

/// Logs in; the maps that `texts` name, or all maps when there are no texts.
QList<MapInfo> fetchMaps(CommandRun& run, const QStringList& texts) {
  run.logIn();
  const QList<MapInfo> listed = run.list(true, false);
  QList<MapInfo> found;
  for (const QString& text : texts)
    found += findMap(listed, text);
  return texts.isEmpty() ? listed : found;
}

/// Calls `each` for every map. A failure that concerns this map alone does not stop the others; the first failure is
/// the result. `done`: a participle for the message, "downloaded".
template <typename Each> CommandResult forEachMap(QList<MapInfo>& maps, const QString& done, Each each) {
  CommandResult all;
  QJsonArray records;
  for (MapInfo& map : maps) {
    CommandResult one;
    try {
      one = each(map);
      records += one.data;
    } catch (const CommandResult& failed) {
      one = failed;
      if (!all.failed())
        all = failed;
      if (one.status < ResultNoAccess || one.status > ResultMapRemoved)
        break;
    }
    if (maps.size() == 1)
      all = one;
    else
      all.text += (one.failed() ? "tarnwell: " : "") + one.message + '\n';
  }
  all.data = {{"maps", records}};
  if (all.failed() && maps.size() > 1)
    all.message += QString("; %1 %2 of %3 maps").arg(done).arg(records.size()).arg(maps.size());
  else if (maps.size() != 1)
    all.message = done + ' ' + mapCount(maps);
  return all;
}

/// Downloads `info` to `file`, "-" for standard output.
CommandResult download(CommandRun& run, MapInfo& info, const QString& file) {
  run.perform({"downloading the map", "GetMapContent_NEW_DESKTOP", "cannot download " + mapTitle(info)},
              [&info](ITarnwellService& service) { return service.getMap(info); });
  CommandResult result;
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
  const bool isFolder = QFileInfo(output).isDir();
  if (!isFolder && (isAll || run.arguments().size() > 1))
    fail(UsageError, "several maps need an existing folder", "name the folder with -o");
  if (output == "-" && !run.isSet("output") && !run.isSet("json") && isatty(STDOUT_FILENO) != 0) {
    fail(UsageError, "a terminal cannot show the bytes of a map",
         "name a file with -o, or redirect the output; -o - prints them nevertheless");
  }
  QList<MapInfo> maps = fetchMaps(run, run.arguments());
  QStringList taken;
  return forEachMap(maps, "downloaded", [&](MapInfo& info) {
    return download(run, info, isFolder ? chooseFile(output, info, taken) : output);
  });
}

CommandResult renameMap(CommandRun& run) {
  const QString newName = run.argument(1);
  if (newName.isEmpty())
    fail(UsageError, "a map needs a name, and NEWNAME is empty");
  MapInfo info = fetchMaps(run, {run.argument(0)}).first();
  run.perform({"renaming the map", "RenameDesktopMap", "cannot rename " + mapTitle(info)},
              [&](ITarnwellService& service) { return service.renameMap(info, newName); });
  CommandResult result;
  result.message = QString("renamed %1 to %2").arg(mapTitle(info), quoted(newName));
  info.setMapName(newName);
  result.data["map"] = mapToJson(info, false);
  return result;
}

CommandResult deleteMaps(CommandRun& run) {
  QList<MapInfo> maps = fetchMaps(run, run.arguments());
  return forEachMap(maps, "deleted", [&run](MapInfo& info) {
    run.perform({"deleting the map", "DeleteDesktopMap", "cannot delete " + mapTitle(info)},
                [&info](ITarnwellService& service) { return service.deleteMap(info); });
    CommandResult one;
    one.message = "deleted " + mapTitle(info);
    one.data = mapToJson(info, false);
    return one;
  });
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
