// The result of a command and its output: texts for people, or one JSON document for programs. Used by every command.
// One thread.
#pragma once

#include "service/ServiceResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace tarnwell {

/// Exit statuses of the host itself. No ServiceResult has these values.
enum HostStatus {
  /// The command line cannot be carried out as given. The service has refused nothing.
  UsageError = 2,
  /// Something on this machine failed: the plug-in, a local file, the configuration.
  LocalError = 3,
  /// A signal ended the command: 128 and the signal's number, as shells have it. This is the lowest of these statuses.
  FirstSignalStatus = 129,
};

/// Texts of the service have gone through printable() in `message`, `advice` and `text`; in `data` they are unchanged.
struct CommandResult {
  /// The exit status: a ServiceResult or a HostStatus.
  int status = ResultOk;
  /// What happened, one sentence without a full stop. Empty when `text` says it all, as for --help.
  QString message;
  /// What to try after a failure. When it is empty, the advice for the status is shown.
  QString advice;
  /// Output for people, on standard output; `data` has the same for programs.
  QString text;
  /// Bytes for standard output, after `text`; base64 in JSON. Null: none.
  QByteArray bytes;
  /// Output for programs: the member "data" of the JSON document.
  QJsonObject data;

  [[nodiscard]] bool failed() const { return status != ResultOk; }
};

/// Ends the command: throws a CommandResult, which becomes the result of the command unless a caller handles it.
[[noreturn]] void fail(int status, const QString& message, const QString& advice = {}, const QJsonObject& data = {});

/// How a command's result is shown.
struct OutputStyle {
  /// The command's name; empty for none.
  QString command;
  /// One JSON document on standard output instead of texts.
  bool isJson = false;
  /// The result code also after a success.
  bool isVerbose = false;
};

/// Writes a line to standard error.
void writeError(const QString& line);

/// Writes output to standard output, and messages to standard error, after a failure with advice and with the result
/// code, its name and its meaning as the last line; or all of it as JSON. Returns the exit status: that of `result`, or
/// LocalError when standard output cannot be written. If a signal ended the command, it ends the process too, so that a
/// loop in a shell stops.
[[nodiscard]] int show(const CommandResult& result, const OutputStyle& style);

} // namespace tarnwell
