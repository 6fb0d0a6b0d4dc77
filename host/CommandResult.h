// The result of a command, the texts that explain it, and how it is shown: to people or, as one JSON document, to
// programs. Used by every command. One thread.
#pragma once

#include "service/ServiceResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace tarnwell {

/// Exit statuses of the host itself, none of which is a ServiceResult. A command that a signal ended has 128 and the
/// signal's number, as shells have it.
enum HostStatus {
  /// The command line cannot be carried out as given; the service did not refuse anything.
  UsageError = 2,
  /// Something on this machine failed: the plug-in, a local file, the configuration.
  LocalError = 3,
  FirstSignalStatus = 129,
};

/// Texts that came from the service are printable() in `message`, `advice` and `text`.
struct CommandResult {
  /// The exit status: a ServiceResult or a HostStatus.
  int status = ResultOk;
  /// What happened, one sentence without a full stop. Empty when `text` says it all, as for --help.
  QString message;
  /// What to try after a failure; empty for what the status itself suggests.
  QString advice;
  /// For people, on standard output; programs find the same in `data`.
  QString text;
  /// Bytes that were asked for on standard output; base64 in JSON.
  QByteArray bytes;
  /// What a program gets.
  QJsonObject data;

  [[nodiscard]] bool failed() const { return status != ResultOk; }
};

[[nodiscard]] CommandResult failure(int status, const QString& message, const QString& advice = {});

/// Writes what was asked for to standard output, or with `json` one document, and messages to standard error, at last
/// the result code with its name and meaning. Returns the exit status: that of `result`, or LocalError if standard
/// output failed.
[[nodiscard]] int show(const CommandResult& result, const QString& command, bool json);

} // namespace tarnwell
