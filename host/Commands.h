// The table of commands. Help, completion scripts and the reading of the command line follow from it. One thread.
#pragma once

#include "host/CommandRun.h"

#include <vector>

namespace tarnwell {

/// A positional argument.
struct Argument {
  /// As the help shows it: "[NAME]" may be left out, "NAME..." may be repeated.
  const char* name;
  const char* help;
};

struct Command {
  const char* name;
  const char* summary;
  std::vector<Argument> arguments;
  QList<QCommandLineOption> options;
  /// Command lines without the program's name, one per line.
  const char* examples;
  CommandResult (*run)(CommandRun&);
};

[[nodiscard]] const std::vector<Command>& commands();

/// The options of every command.
[[nodiscard]] QList<QCommandLineOption> generalOptions();

/// Runs the command line, which begins with the program's name, and sets `command` to the command's name.
[[nodiscard]] CommandResult runCommandLine(const QStringList& commandLine, QString& command);

CommandResult logIn(CommandRun& run);
CommandResult listMaps(CommandRun& run);
CommandResult getMaps(CommandRun& run);
CommandResult saveMap(CommandRun& run);
CommandResult renameMap(CommandRun& run);
CommandResult deleteMaps(CommandRun& run);
CommandResult makeGallery(CommandRun& run);
CommandResult checkForUpdates(CommandRun& run);
CommandResult sendReport(CommandRun& run);
CommandResult showConfiguration(CommandRun& run);
CommandResult showCompletion(CommandRun& run);

} // namespace tarnwell
