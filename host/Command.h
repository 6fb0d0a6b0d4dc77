// A command as a row of the table in Commands.cpp. Help, completion scripts and the reading of the command line follow
// from it.
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

} // namespace tarnwell
