#include "host/CommandResult.h"

#include "host/Text.h"

#include <QtCore/QJsonDocument>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace tarnwell {

namespace {

struct StatusText {
  int status;
  /// The ServiceResult's name; null for a HostStatus.
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
     "save it under another --name, or overwrite the stored map with --force"},
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
  static constexpr StatusText interrupted{FirstSignalStatus, nullptr, "a signal ended the command",
                                          "repeat the command"};
  if (status >= FirstSignalStatus)
    return interrupted;
  static constexpr StatusText unknown{-1, "?", "not a result that this host knows", "use a plug-in of this version"};
  return unknown;
}

QString adviceOf(const CommandResult& result) {
  return result.advice.isEmpty() ? QString::fromUtf8(textOf(result.status).advice) : result.advice;
}

bool writeOut(const QByteArray& bytes) {
  const auto size = static_cast<size_t>(bytes.size());
  return std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

QByteArray toJson(const CommandResult& result, const QString& command) {
  const StatusText& text = textOf(result.status);
  QJsonObject data = result.data;
  if (!result.bytes.isNull())
    data["content"] = QString::fromLatin1(result.bytes.toBase64());
  QJsonObject root{{"command", command.isEmpty() ? QJsonValue() : command},
                   {"exitStatus", result.status},
                   {"result", text.name == nullptr ? QJsonValue() : result.status},
                   {"resultName", text.name == nullptr ? QJsonValue() : QString::fromUtf8(text.name)},
                   {"meaning", QString::fromUtf8(text.meaning)},
                   {"message", result.message},
                   {"data", data}};
  if (result.failed())
    root["advice"] = adviceOf(result);
  return terminalSafeJson(QJsonDocument(root).toJson());
}

void explain(const CommandResult& result, bool isVerbose) {
  const StatusText& text = textOf(result.status);
  const QString meaning = QString::fromUtf8(text.meaning);
  writeError(result.failed() ? "tarnwell: " + result.message : result.message);
  if (result.failed())
    writeError("try: " + adviceOf(result));
  else if (!isVerbose)
    return;
  if (text.name == nullptr)
    writeError(QString("exit status %1: %2").arg(QString::number(result.status), meaning));
  else
    writeError(QString("result %1 %2: %3").arg(QString::number(result.status), text.name, meaning));
}

} // namespace

void fail(int status, const QString& message, const QString& advice, const QJsonObject& data) {
  throw CommandResult{status, message, advice, {}, {}, data};
}

void writeError(const QString& line) { std::fprintf(stderr, "%s\n", line.toUtf8().constData()); }

int show(const CommandResult& result, const OutputStyle& style) {
  const QByteArray output = style.isJson ? toJson(result, style.command) : result.text.toUtf8() + result.bytes;
  if (!writeOut(output)) {
    writeError(QString("tarnwell: cannot write to standard output: %1").arg(std::strerror(errno)));
    return LocalError;
  }
  if (!style.isJson && !result.message.isEmpty())
    explain(result, style.isVerbose);
  if (result.status >= FirstSignalStatus)
    std::raise(result.status - FirstSignalStatus + 1);
  return result.status;
}

} // namespace tarnwell
