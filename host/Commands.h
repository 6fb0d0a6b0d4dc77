// The program without its main(): finds the command, carries it out and shows its result. One thread.
#pragma once

#include <QtCore/QStringList>

namespace tarnwell {

/// Runs the command line, which begins with the program's name, and returns the exit status.
[[nodiscard]] int runCommandLine(const QStringList& commandLine);

} // namespace tarnwell
