#include "host/Commands.h"

#include "host/Command.h"
#include "host/Completion.h"
#include "host/MapCommands.h"
#include "host/SaveCommand.h"
#include "host/ServiceCommands.h"
#include "host/Text.h"

#include <algorithm>
#include <numeric>

namespace tarnwell {

namespace {

const Argument mapArgument{
    "MAP", "A map's identifier or the first eight digits of it, or its name if no other map has the same."};
const Argument mapArguments{"MAP...", "Maps, each by identifier or name."};

QCommandLineOption option(const QStringList& names, const char* help, const char* valueName = "",
                          const char* fallback = "") {
  return {names, help, valueName, fallback};
}

/// A success with `text` for people, and for programs as the member `key`.
CommandResult textResult(const char* key, const QString& text) { return {ResultOk, {}, {}, text, {}, {{key, text}}}; }

const std::vector<Command>& commands();

QList<QCommandLineOption> generalOptions() {
  return settingOptions() + QList<QCommandLineOption>{
                                option({"json"}, "Print one JSON document for programs, also after a failure."),
                                option({"verbose"}, "Show the result code also after a success."),
                                option({"h", "help"}, "Show this help, or that of the command."),
                                option({"v", "version"}, "Show the version."),
                            };
}

QString programHelp() {
  QCommandLineParser parser;
  parser.addOptions(generalOptions());
  QString description = "Keeps mind maps on the map service.\n\nCommands:\n";
  for (const Command& command : commands())
    description += QString("  %1  %2\n").arg(command.name, -10).arg(command.summary);
  description += "\nThe exit status is the result code: 0 success, 1 failure, 4 not a user, 5 not a premium account,\n"
                 "6 already stored, 7 no access, 8 no such file, 9 ongoing collaboration, 10 map removed. Other\n"
                 "statuses: 2 a command line that cannot be carried out, 3 a failure on this machine, 130 Ctrl-C.";
  parser.setApplicationDescription(description);
  parser.addPositionalArgument("COMMAND", "See above; 'tarnwell help COMMAND' tells more.", "COMMAND [arguments]");
  return parser.helpText() + "\nExamples:\n  tarnwell list --user anna\n  tarnwell help save\n";
}

QString commandHelp(const Command& command) {
  QCommandLineParser parser;
  parser.addOptions(command.options);
  parser.addOptions(generalOptions());
  parser.setApplicationDescription(command.summary);
  QString before = QString(command.name) + ' ';
  for (const Argument& argument : command.arguments) {
    parser.addPositionalArgument(argument.name, argument.help, before + argument.name);
    before.clear();
  }
  if (command.arguments.empty())
    parser.addPositionalArgument(command.name, command.summary);
  QString help = parser.helpText() + "\nExamples:\n";
  for (const QString& line : QString(command.examples).split('\n'))
    help += "  tarnwell " + line + '\n';
  return help;
}

const Command* findCommand(const QString& name) {
  const auto found = std::find_if(commands().begin(), commands().end(),
                                  [&name](const Command& command) { return name == command.name; });
  return found == commands().end() ? nullptr : &*found;
}

/// How many characters have to be added, removed or replaced to make `to` of `from`.
int distance(const QString& from, const QString& to) {
  std::vector<int> row(static_cast<size_t>(to.size()) + 1);
  std::iota(row.begin(), row.end(), 0);
  for (const QChar unit : from) {
    int diagonal = row[0]++;
    for (size_t j = 0; j < row.size() - 1; j++) {
      const int replaced = diagonal + (unit == to[static_cast<int>(j)] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

[[noreturn]] void failCommand(const QString& name) {
  if (name.isEmpty())
    fail(UsageError, "no command given");
  const auto nearest = std::min_element(commands().begin(), commands().end(), [&](const auto& left, const auto& right) {
    return distance(name, left.name) < distance(name, right.name);
  });
  const bool isNear = distance(name, nearest->name) <= 2;
  fail(UsageError, QString("there is no command %1").arg(quoted(name)),
       isNear ? QString("did you mean '%1'? See 'tarnwell --help'").arg(nearest->name) : QString());
}

CommandResult showHelp(CommandRun& run) {
  const QString name = run.argument(0);
  if (name.isEmpty())
    return textResult("help", programHelp());
  const Command* const command = findCommand(name);
  if (command == nullptr)
    failCommand(name);
  return textResult("help", commandHelp(*command));
}

CommandResult showCompletion(CommandRun& run) {
  const QString script = completionScript(run.argument(0), commands(), generalOptions());
  if (script.isEmpty())
    fail(UsageError, QString("there is no completion for %1").arg(quoted(run.argument(0))), "use bash, zsh or fish");
  return textResult("script", script);
}

/// Why `count` positional arguments do not fit, or an empty text.
QString wrongCount(const Command& command, int count) {
  const auto has = [](char mark) {
    return [mark](const Argument& argument) { return strchr(argument.name, mark) != nullptr; };
  };
  const std::vector<Argument>& arguments = command.arguments;
  const auto optional = static_cast<int>(std::count_if(arguments.begin(), arguments.end(), has('[')));
  const auto most = static_cast<int>(arguments.size());
  if (count > most && std::none_of(arguments.begin(), arguments.end(), has('.')))
    return "too many arguments";
  return count < most - optional ? QString("%1 is missing").arg(arguments[static_cast<size_t>(count)].name) : QString();
}

const std::vector<Command>& commands() {
  static const std::vector<Command> table{
      {"login", "Check that the service knows the user.", {}, {}, "login --user anna", logIn},
      {"list",
       "List the user's maps with the sizes of their previews.",
       {},
       {option({"lite"}, "Leave out the previews, which is faster."),
        option({"published"}, "Ask the service for published maps."),
        option({"format"},
               "table, which fits the terminal, or tsv: a heading and a line per map, cells separated by tabs; a "
               "tab or line break in a cell becomes a blank.",
               "FORMAT", "table")},
       "list --user anna\nlist --user anna --lite --json\nlist --format tsv | tail -n +2 | cut -f 1",
       listMaps},
      {"get",
       "Download maps: one to standard output or a file, several into a folder.",
       {{"[MAP...]", mapArguments.help}},
       {option({"o", "output"},
               "Write to this file, which is replaced whole or not at all, or into this folder, each map as NAME.twlx; "
               "- is standard output. Several maps need a folder; it is made if its parent exists.",
               "FILE"),
        option({"overwrite"}, "Replace files in the folder. Default: they are left as they are."),
        option({"all"}, "Download all maps of the user.")},
       "get --user anna Goals -o goals.twlx\nget 67c8770b > goals.twlx\nget --all -o backup",
       getMaps},
      {"save",
       "Upload a file as a new map, or over one that is stored.",
       {{"FILE", "The map file; - is standard input, which needs --name."},
        {"[MAP]", "The stored map to overwrite, by identifier or name; then see --force."}},
       {option({"name"}, "The map's name. Default: that of the map overwritten, or the file's.", "NAME"),
        option({"thumbnail"}, "Preview image. Default: that of the map overwritten stays.", "FILE"),
        option({"no-thumbnail"}, "Store no preview image."),
        option({"description"}, "The map's description. Default: that of the map overwritten stays.", "TEXT"),
        option({"published"}, "Publish the map. Default: a map overwritten stays as it is."),
        option({"unpublished"}, "Do not publish the map."),
        option({"force"}, "Overwrite the stored map: MAP, or the one of the same name.")},
       "save --user anna goals.twlx --thumbnail goals.png\nsave --user anna goals.twlx Goals --force",
       saveMap},
      {"rename",
       "Give a stored map another name.",
       {mapArgument, {"NEWNAME", "The new name."}},
       {},
       "rename --user anna Goals 'Goals of May'",
       renameMap},
      {"delete",
       "Remove maps from the service.",
       {mapArguments},
       {},
       "delete --user anna 'Goals of May'\ndelete 67c8770b 5b548e0c",
       deleteMaps},
      {"updates",
       "Ask for a newer setup than the installed one; no login.",
       {{"VERSION", "The installed version."}},
       {option({"live-update-type"}, "Kind of live update, a number that the service defines. Default: 0.", "N"),
        option({"application-type"}, "Kind of application: asks with the extended check.", "N")},
       "updates 4.1.2\nupdates 4.1.2 --live-update-type 1 --application-type 2",
       checkForUpdates},
      {"report",
       "Send a crash report, with a file if one is named; no login.",
       {{"SUBJECT", "One line."}, {"MESSAGE", "What happened."}, {"[FILE]", "The file to attach."}},
       {},
       "report 'Crash on save' 'It stopped when I saved.' crash.dmp",
       sendReport},
      {"gallery",
       "Make a page of the maps' previews to look at in a browser.",
       {{"FILE", "The HTML file to write; it needs no other. - is standard output."}},
       {option({"published"}, "Ask the service for published maps.")},
       "gallery --user anna maps.html",
       makeGallery},
      {"config",
       "Show each setting and its origin: option, profile, environment variable, configuration file.",
       {},
       {},
       "config\nconfig --profile work",
       showConfiguration},
      {"completion",
       "Print a completion script for a shell.",
       {{"SHELL", "bash, zsh or fish."}},
       {},
       "completion bash > ~/.local/share/bash-completion/completions/tarnwell",
       showCompletion},
      {"help", "Show the help for a command.", {{"[COMMAND]", "The command."}}, {}, "help save", showHelp},
  };
  return table;
}

/// Carries out the command line and sets `style` as soon as it is known.
CommandResult carryOut(const QStringList& commandLine, OutputStyle& style) {
  // Only general options may stand before the command: a command's own options are not known before it is found.
  QCommandLineParser parser;
  parser.addOptions(generalOptions());
  bool isParsed = parser.parse(commandLine);
  style.command = parser.positionalArguments().value(0);
  const Command* const found = findCommand(style.command);
  if (found != nullptr) {
    parser.addOptions(found->options);
    isParsed = parser.parse(commandLine);
  }
  style.isJson = parser.isSet("json");
  style.isVerbose = parser.isSet("verbose");
  const QString advice = found == nullptr ? QString() : QString("see 'tarnwell help %1'").arg(style.command);
  if (!isParsed && (found != nullptr || style.command.isEmpty()))
    fail(UsageError, printable(parser.errorText()), advice);
  if (found == nullptr && !style.command.isEmpty())
    failCommand(style.command);
  if (parser.isSet("help"))
    return textResult("help", found == nullptr ? programHelp() : commandHelp(*found));
  if (parser.isSet("version"))
    return {ResultOk, {}, {}, QString("tarnwell %1\n").arg(TARNWELL_VERSION), {}, {{"version", TARNWELL_VERSION}}};
  if (found == nullptr)
    failCommand(style.command);
  const QString wrong = wrongCount(*found, static_cast<int>(parser.positionalArguments().size()) - 1);
  if (!wrong.isEmpty())
    fail(UsageError, wrong, advice);
  CommandRun run(parser, style);
  return found->run(run);
}

} // namespace

int runCommandLine(const QStringList& commandLine) {
  OutputStyle style;
  CommandResult result;
  try {
    result = carryOut(commandLine, style);
  } catch (const CommandResult& failed) {
    result = failed;
  }
  return show(result, style);
}

} // namespace tarnwell
