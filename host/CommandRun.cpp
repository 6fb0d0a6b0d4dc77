#include "host/CommandRun.h"

#include "host/Credentials.h"
#include "host/Plugin.h"
#include "host/Text.h"
#include "host/WatchedCall.h"

#include <cstdlib>

namespace tarnwell {

CommandResult CommandRun::readNumber(const char* option, int& number) const {
  if (!isSet(option))
    return {};
  bool isNumber = false;
  const int given = value(option).toInt(&isNumber);
  if (!isNumber)
    return failure(UsageError, QString("--%1 takes a number, not %2").arg(option, quoted(value(option))));
  number = given;
  return {};
}

CommandResult CommandRun::useProxy() {
  if (!m_address.hasProxy())
    return {};
  const QString user = m_settings.value("proxy-user");
  if (user.isEmpty()) {
    // setProxySettings() would send credentials although they are empty.
    m_service->setProxyHost(m_address.proxyHost);
    m_service->setProxyPort(m_address.proxyPort);
    return {};
  }
  m_proxyLogin.user = user;
  CommandResult read = readPassword("TARNWELL_PROXY_PASSWORD", QString("Password of %1 at the proxy: ").arg(user),
                                    m_proxyLogin.password);
  if (!read.failed())
    m_service->setProxySettings(m_address.proxyHost, m_address.proxyPort, user, m_proxyLogin.password, true);
  return read;
}

CommandResult CommandRun::open() {
  CommandResult result = readSettings(m_options, m_settings);
  if (!result.failed())
    result = readAddress(m_settings, m_address);
  if (!result.failed())
    result = readTimeout(m_settings, m_limit);
  if (!result.failed())
    result = loadPlugin(m_settings.value("plugin"), m_service);
  if (result.failed())
    return result;
  m_service->setEndPoint(m_settings.value("endpoint"));
  return useProxy();
}

CommandResult CommandRun::logIn() {
  CommandResult result = open();
  if (result.failed())
    return result;
  if (user().isEmpty())
    return failure(UsageError, "no user name given", "name your account with --user or TARNWELL_USER");
  QString password;
  result = readPassword("TARNWELL_PASSWORD", QString("Password of %1: ").arg(printable(user())), password);
  if (result.failed())
    return result;
  return perform({"logging in", "Login", QString("cannot log in as %1").arg(quoted(user()))},
                 [&](ITarnwellService& service) { return service.login(user(), password); });
}

CommandResult CommandRun::perform(const CallText& text, const std::function<int(ITarnwellService&)>& call,
                                  qint64 size) {
  m_isAnswering = false;
  const CallEnd end =
      watchCall(text.activity, m_address.peerPort(), m_limit, [this, &call] { return call(*m_service); });
  if (end.isRunning)
    finish(endedResult(text, end));
  if (end.how != CallEnd::Returned && end.result != ResultOk)
    return endedResult(text, end);
  if (end.result == ResultFailed)
    return findCause(text, size);
  return end.result == ResultOk ? CommandResult() : failure(end.result, text.failure);
}

CommandResult CommandRun::findCause(const CallText& text, qint64 size) {
  const CallText check{"finding out why the call failed", text.operation, text.failure};
  Diagnosis diagnosis;
  const CallEnd end = watchCall(check.activity, m_address.peerPort(), m_limit, [&] {
    diagnosis = diagnose(m_address, m_proxyLogin, text.operation, size);
    return 0;
  });
  if (end.isRunning)
    finish(endedResult(check, end));
  m_isAnswering = diagnosis.isAnswering;
  if (diagnosis.isAnswering) {
    return failure(ResultFailed, text.failure + ": the service answers, but reported an error or broke the connection",
                   "try again; if you named a map by its identifier, see with 'tarnwell list' whether it is there");
  }
  return failure(ResultFailed, text.failure + ": " + diagnosis.cause, diagnosis.advice);
}

CommandResult CommandRun::endedResult(const CallText& text, const CallEnd& end) const {
  if (end.how == CallEnd::Interrupted)
    return failure(FirstSignalStatus - 1 + end.signal, text.failure + ": interrupted");
  const QString peer = QString("%1, port %2").arg(quoted(m_address.peerHost())).arg(m_address.peerPort());
  QString where = peer + " did not complete its answer";
  if (end.progress.phase == CallProgress::Connecting)
    where = peer + " did not accept the connection";
  else if (end.progress.phase != CallProgress::Connected)
    where = QString("there was no connection to %1, perhaps its name is not found").arg(peer);
  return failure(ResultFailed, QString("%1: %2 within %3 s").arg(text.failure, where).arg(m_limit),
                 "try again, with a longer --timeout if the network is slow");
}

void CommandRun::finish(const CommandResult& result) const { std::_Exit(show(result, m_command, isSet("json"))); }

void CommandRun::limitTime(double seconds) {
  if (m_limit == 0 || m_limit > seconds)
    m_limit = seconds;
}

CommandResult CommandRun::list(bool isLite, bool isPublished, QList<MapInfo>& maps) {
  maps.clear();
  if (isLite) {
    return perform({"listing maps", "GetMapsListLite_NEW_DESKTOP", "cannot list the maps"},
                   [&](ITarnwellService& service) { return service.getDesktopMapsListLite(isPublished, maps); });
  }
  return perform({"listing maps", "GetMapsList_NEW_DESKTOP", "cannot list the maps"},
                 [&](ITarnwellService& service) { return service.getDesktopMapsList(isPublished, maps); });
}

} // namespace tarnwell
