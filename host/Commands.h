// The commands: one table, from which the help, the reading of the command line and the call follow. One thread.
#pragma once

#include "host/Session.h"

#include <vector>

namespace tarnwell {

struct Argument {
  /// As the help shows it; in brackets when it may be left out.
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
  Outcome (*run)(Session&);
};

/// Runs the command line, program name first, `command` taking the command's name for the showing of the outcome.
[[nodiscard]] Outcome runCommandLine(const QStringList& commandLine, QString& command);

Outcome logIn(Session& session);
Outcome listMaps(Session& session);
Outcome getMap(Session& session);
Outcome saveMap(Session& session);
Outcome renameMap(Session& session);
Outcome deleteMap(Session& session);
Outcome makeGallery(Session& session);
Outcome checkForUpdates(Session& session);
Outcome sendReport(Session& session);

} // namespace tarnwell
