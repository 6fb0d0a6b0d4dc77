#include "host/Commands.h"

#include "host/Text.h"

#include <algorithm>

namespace tarnwell {

namespace {

const Argument mapArgument{"MAP", "A map's identifier, or its name if no other map has the same."};

const std::vector<Command>& commands() {
  static const std::vector<Command> table{
      {"login", "Check that the service knows the user.", {}, {}, "login --user anna", logIn},
      {"list",
       "List the user's maps with the sizes of their previews.",
       {},
       {{"lite", "Leave out the previews; faster."}, {"published", "Ask the service for published maps."}},
       "list --user anna\nlist --user anna --lite --json",
       listMaps},
      {"get",
       "Download a map's content, to standard output or a file.",
       {mapArgument},
       {{{"o", "output"}, "Write to this file, which is replaced whole or not at all; - is standard output.", "FILE"}},
       "get --user anna Goals -o goals.twlx\nget --user anna 67c8770b-44f1-410a-ab9a-f9b5446f13ee > goals.twlx",
       getMap},
      {"save",
       "Upload a file as a new map, or over one that is stored.",
       {{"FILE", "The map file."}, {"[MAP]", "The stored map to overwrite, by identifier or name; then see --force."}},
       {{"name", "The map's name. Without this option: the file's name, or that of the map overwritten.", "NAME"},
        {"thumbnail", "Preview image. Without this option the stored map has none.", "FILE"},
        {"description", "The map's description. Without this option that of the map overwritten stays.", "TEXT"},
        {"published", "Publish the map. Without this option a map overwritten stays as it is."},
        {"force", "Overwrite what is stored."}},
       "save --user anna goals.twlx --thumbnail goals.png\nsave --user anna goals.twlx Goals --force",
       saveMap},
      {"rename",
       "Give a stored map another name.",
       {mapArgument, {"NEWNAME", "The new name."}},
       {},
       "rename --user anna Goals 'Goals of May'",
       renameMap},
      {"delete", "Remove a map from the service.", {mapArgument}, {}, "delete --user anna 'Goals of May'", deleteMap},
      {"updates",
       "Ask for a newer setup than the installed one; no login.",
       {{"VERSION", "The installed version."}},
       {{"live-update-type", "Kind of live update, a number of the service's own; 0 without this option.", "N"},
        {"application-type", "Kind of application: asks with the extended check.", "N"}},
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
       {{"OUT.html", "The file to write; it needs no other. - is standard output."}},
       {{"published", "Ask the service for published maps."}},
       "gallery --user anna maps.html",
       makeGallery},
  };
  return table;
}

const QList<QCommandLineOption>& generalOptions() {
  static const QList<QCommandLineOption> options{
      {"json", "Print one JSON document for programs, also after a failure."},
      {{"h", "help"}, "Show this help, or with a command the command's."},
      {{"v", "version"}, "Show the version."},
  };
  return options;
}

void addOptions(QCommandLineParser& parser, const Command* command) {
  if (command != nullptr)
    parser.addOptions(command->options);
  parser.addOptions(connectionOptions());
  parser.addOptions(generalOptions());
}

QString examplesOf(const Command& command) {
  QString text = "\nExamples:\n";
  for (const QString& line : QString(command.examples).split('\n'))
    text += "  tarnwell " + line + '\n';
  return text;
}

Outcome help(const QString& text) {
  Outcome outcome;
  outcome.text = text;
  outcome.data["help"] = text;
  return outcome;
}

Outcome programHelp(QCommandLineParser& parser) {
  QString description = "Keeps mind maps on the map service.\n\nCommands:\n";
  for (const Command& command : commands())
    description += QString("  %1  %2\n").arg(command.name, -8).arg(command.summary);
  description += "\nThe exit status is the result code: 0 success, 1 failure, 4 not a user, 5 not a premium account,\n"
                 "6 already stored, 7 no access, 8 no such file, 9 ongoing collaboration, 10 map removed; beside\n"
                 "these 2 for a command that cannot be carried out as given and 3 for a failure on this machine.";
  parser.setApplicationDescription(description);
  parser.addPositionalArgument("COMMAND", "See above; 'tarnwell COMMAND --help' tells more.", "COMMAND [arguments]");
  return help(parser.helpText() + "\nExamples:\n  tarnwell list --user anna\n  tarnwell save --help\n");
}

Outcome commandHelp(QCommandLineParser& parser, const Command& command) {
  parser.setApplicationDescription(command.summary);
  QString before = QString(command.name) + ' ';
  for (const Argument& argument : command.arguments) {
    parser.addPositionalArgument(argument.name, argument.help, before + argument.name);
    before.clear();
  }
  if (command.arguments.empty())
    parser.addPositionalArgument(command.name, command.summary);
  return help(parser.helpText() + examplesOf(command));
}

/// Why `count` positional arguments do not fit, or an empty text.
QString wrongCount(const Command& command, int count) {
  const auto isOptional = [](const Argument& argument) { return argument.name[0] == '['; };
  const auto optional = std::count_if(command.arguments.begin(), command.arguments.end(), isOptional);
  const auto most = static_cast<int>(command.arguments.size());
  if (count > most)
    return "too many arguments";
  const int least = most - static_cast<int>(optional);
  return count < least ? QString("%1 is missing").arg(command.arguments[static_cast<size_t>(count)].name) : QString();
}

Outcome run(const Command& command, const QStringList& commandLine) {
  QCommandLineParser parser;
  addOptions(parser, &command);
  const bool isParsed = parser.parse(commandLine);
  if (parser.isSet("help"))
    return commandHelp(parser, command);
  const QString advice = QString("see 'tarnwell %1 --help'").arg(command.name);
  if (!isParsed)
    return failure(UsageError, printable(parser.errorText()), advice);
  const QStringList arguments = parser.positionalArguments().mid(1);
  const QString wrong = wrongCount(command, arguments.size());
  if (!wrong.isEmpty())
    return failure(UsageError, wrong, advice);
  Session session(parser, arguments);
  return command.run(session);
}

} // namespace

Outcome runCommandLine(const QStringList& commandLine, QString& command) {
  // The command comes first but for general options, so that options of its own cannot confuse the search for it.
  QCommandLineParser parser;
  addOptions(parser, nullptr);
  parser.parse(commandLine);
  command = parser.positionalArguments().value(0);
  for (const Command& candidate : commands()) {
    if (command == candidate.name)
      return run(candidate, commandLine);
  }
  if (parser.isSet("version"))
    return help(QString("tarnwell %1\n").arg(TARNWELL_VERSION));
  if (parser.isSet("help"))
    return programHelp(parser);
  if (command.isEmpty())
    return failure(UsageError, "no command given");
  return failure(UsageError, QString("there is no command %1").arg(quoted(command)));
}

} // namespace tarnwell
