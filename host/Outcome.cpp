#include "host/Outcome.h"

#include "host/Text.h"

#include <QtCore/QJsonDocument>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tarnwell {

namespace {

struct StatusText {
  int status;
  /// The ServiceResult's name; null for the host's own.
  const char* name;
  const char* meaning;
  const char* advice;
};

constexpr StatusText statusTexts[] = {
    {ResultOk, "ResultOk", "the operation succeeded", ""},
    {ResultFailed, "ResultFailed", "the call could not be made or failed, or the service reported an error",
     "check that the service runs at the --endpoint, and the network and --proxy, then try again"},
    {ResultNotAUser, "ResultNotAUser", "the service does not know this user name and password",
     "check --user and the password"},
    {ResultNotPremiumAccount, "ResultNotPremiumAccount", "the account exists but is not a premium account",
     "use a premium account; only those keep maps on the service"},
    {ResultFileExists, "ResultFileExists", "a map with this identity is already stored",
     "take another name, or to overwrite it save with --force"},
    {ResultNoAccess, "ResultNoAccess", "the map belongs to somebody else",
     "ask its owner, or log in as the owner with --user"},
    {ResultNoSuchFile, "ResultNoSuchFile", "the local path names a directory or nothing at all",
     "check the path; it has to name a file"},
    {ResultOngoingCollaboration, "ResultOngoingCollaboration", "others are working on the map at the moment",
     "repeat the command when they have finished"},
    {ResultMapRemoved, "ResultMapRemoved", "the map was removed from the service",
     "see 'tarnwell list' for what is there; a file can be saved again as a new map"},
    {UsageError, nullptr, "the command cannot be carried out as it was given", "see 'tarnwell --help'"},
    {LocalError, nullptr, "something on this machine failed", "check permissions and free space"},
};

const StatusText& textOf(int status) {
  for (const StatusText& row : statusTexts) {
    if (row.status == status)
      return row;
  }
  static constexpr StatusText unknown{-1, "?", "not a result that this host knows", "use a plug-in of this version"};
  return unknown;
}

QString adviceOf(const Outcome& outcome) {
  return outcome.advice.isEmpty() ? QString::fromUtf8(textOf(outcome.status).advice) : outcome.advice;
}

bool writeOut(const QByteArray& bytes) {
  const auto size = static_cast<size_t>(bytes.size());
  return std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

void writeError(const QString& line) { std::fprintf(stderr, "%s\n", line.toUtf8().constData()); }

QByteArray document(const Outcome& outcome, const QString& command) {
  const StatusText& text = textOf(outcome.status);
  QJsonObject data = outcome.data;
  if (!outcome.bytes.isNull())
    data["content"] = QString::fromLatin1(outcome.bytes.toBase64());
  QJsonObject root{{"command", command.isEmpty() ? QJsonValue() : command},
                   {"exitStatus", outcome.status},
                   {"result", text.name == nullptr ? QJsonValue() : outcome.status},
                   {"resultName", text.name == nullptr ? QJsonValue() : QString::fromUtf8(text.name)},
                   {"meaning", QString::fromUtf8(text.meaning)},
                   {"message", outcome.message},
                   {"data", data}};
  if (outcome.failed())
    root["advice"] = adviceOf(outcome);
  return terminalSafeJson(QJsonDocument(root).toJson());
}

void explain(const Outcome& outcome) {
  const StatusText& text = textOf(outcome.status);
  const QString meaning = QString::fromUtf8(text.meaning);
  writeError(outcome.failed() ? "tarnwell: " + outcome.message : outcome.message);
  if (outcome.failed())
    writeError("try: " + adviceOf(outcome));
  if (text.name == nullptr)
    writeError(QString("exit status %1: %2").arg(QString::number(outcome.status), meaning));
  else
    writeError(QString("result %1 %2: %3").arg(QString::number(outcome.status), text.name, meaning));
}

} // namespace

Outcome failure(int status, const QString& message, const QString& advice) {
  Outcome outcome;
  outcome.status = status;
  outcome.message = message;
  outcome.advice = advice;
  return outcome;
}

int show(const Outcome& outcome, const QString& command, bool json) {
  const QByteArray output = json ? document(outcome, command) : outcome.text.toUtf8() + outcome.bytes;
  if (!writeOut(output)) {
    writeError(QString("tarnwell: cannot write to standard output: %1").arg(std::strerror(errno)));
    return LocalError;
  }
  if (!json && !outcome.message.isEmpty())
    explain(outcome);
  return outcome.status;
}

} // namespace tarnwell
