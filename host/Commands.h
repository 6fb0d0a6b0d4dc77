// The commands: one table, from which the help, the reading of the command line and the call follow. One thread.
#pragma once

#include "host/CommandRun.h"

#include <vector>

namespace tarnwell {

struct Argument {
  /// As the help shows it: in brackets when it may be left out, with dots when it may be repeated.
  const char* name;
  const char* help;
};

struct Command {
  const char* name;
  const char* summary;
  std::vector<Argument> arguments;
  QList<QCommandLineOption> options;
  /// What follows the program's name, one per line.
  const char* examples;
  CommandResult (*run)(CommandRun&);
};

[[nodiscard]] const std::vector<Command>& commands();

/// The options of every command.
[[nodiscard]] QList<QCommandLineOption> generalOptions();

/// Runs the command line, program name first, and sets `command` to the command's name.
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
