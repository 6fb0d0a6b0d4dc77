// What a command comes to, the texts that explain it, and how it is shown: to people or, as one JSON document, to
// programs. Used by every command. One thread.
#pragma once

#include "service/ServiceResult.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace tarnwell {

/// Exit statuses of the host itself, apart from every ServiceResult.
enum HostStatus {
  /// The command line cannot be carried out as given; the service did not refuse anything.
  UsageError = 2,
  /// Something on this machine failed: the plug-in, a local file, the password prompt.
  LocalError = 3,
};

/// The end of a command. Texts that came from the service are printable() in `message`, `advice` and `text`.
struct Outcome {
  /// A ServiceResult or a HostStatus; the exit status.
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

[[nodiscard]] Outcome failure(int status, const QString& message, const QString& advice = {});

/// Standard output gets what was asked for, or with `json` one document; standard error how it went, last the result
/// code with name and meaning. Returns the exit status: that of `outcome`, or LocalError if standard output failed.
[[nodiscard]] int show(const Outcome& outcome, const QString& command, bool json);

} // namespace tarnwell
