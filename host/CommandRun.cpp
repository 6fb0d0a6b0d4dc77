#include "host/CommandRun.h"

#include "host/Credentials.h"
#include "host/Plugin.h"
#include "host/Text.h"
#include "host/WatchedCall.h"

#include <cstdlib>

namespace tarnwell {

int CommandRun::number(const char* option) const {
  if (!isSet(option))
    return 0;
  bool isNumber = false;
  const int given = value(option).toInt(&isNumber);
  if (!isNumber)
    fail(UsageError, QString("--%1 takes a number, not %2").arg(option, quoted(value(option))));
  return given;
}

void CommandRun::useProxy() {
  if (!m_address.hasProxy())
    return;
  const QString user = m_settings.value("proxy-user");
  if (user.isEmpty()) {
    // setProxySettings() would send credentials although they are empty.
    m_service->setProxyHost(m_address.proxyHost);
    m_service->setProxyPort(m_address.proxyPort);
    return;
  }
  m_proxyLogin = {user, readPassword("TARNWELL_PROXY_PASSWORD", QString("Password of %1 at the proxy: ").arg(user))};
  m_service->setProxySettings(m_address.proxyHost, m_address.proxyPort, user, m_proxyLogin.password, true);
}

void CommandRun::open() {
  m_settings = readSettings(m_options);
  m_address = readAddress(m_settings);
  m_limit = readTimeout(m_settings);
  m_service = loadPlugin(m_settings.value("plugin"));
  m_service->setEndPoint(m_settings.value("endpoint"));
  useProxy();
}

void CommandRun::logIn() {
  open();
  if (user().isEmpty())
    fail(UsageError, "no user name given", "name your account with --user or TARNWELL_USER");
  const QString password = readPassword("TARNWELL_PASSWORD", QString("Password of %1: ").arg(printable(user())));
  perform({"logging in", "Login", QString("cannot log in as %1").arg(quoted(user()))},
          [&](ITarnwellService& service) { return service.login(user(), password); });
}

void CommandRun::perform(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size) {
  m_isAnswering = false;
  const CallEnd end =
      watchCall(text.activity, m_address.peerPort(), m_limit, [this, &call] { return call(*m_service); });
  if (end.isRunning)
    finishEnded(text, end);
  if (end.how != CallEnd::Returned && end.result != ResultOk)
    failEnded(text, end);
  if (end.result == ResultFailed)
    failWithCause(text, size);
  if (end.result != ResultOk)
    fail(end.result, text.failure);
}

void CommandRun::failWithCause(const CallText& text, qint64 size) {
  const CallText check{"finding out why the call failed", text.operation, text.failure};
  Diagnosis diagnosis;
  const CallEnd end = watchCall(check.activity, m_address.peerPort(), m_limit, [&] {
    diagnosis = diagnose(m_address, m_proxyLogin, text.operation, size);
    return 0;
  });
  if (end.isRunning)
    finishEnded(check, end);
  m_isAnswering = diagnosis.isAnswering;
  if (diagnosis.isAnswering)
    fail(ResultFailed, text.failure + ": the service answers, but reported an error or broke the connection",
         "try again; if you named a map by its identifier, see with 'tarnwell list' whether it is there");
  fail(ResultFailed, text.failure + ": " + diagnosis.cause, diagnosis.advice);
}

void CommandRun::failEnded(const CallText& text, const CallEnd& end) const {
  if (end.how == CallEnd::Interrupted)
    fail(FirstSignalStatus - 1 + end.signal, text.failure + ": interrupted");
  const QString peer = QString("%1, port %2").arg(quoted(m_address.peerHost())).arg(m_address.peerPort());
  QString where = peer + " did not complete its answer";
  if (end.progress.phase == CallProgress::Connecting)
    where = peer + " did not accept the connection";
  else if (end.progress.phase != CallProgress::Connected)
    where = QString("there was no connection to %1, perhaps its name is not found").arg(peer);
  fail(ResultFailed, QString("%1: %2 within %3 s").arg(text.failure, where).arg(m_limit),
       "try again, with a longer --timeout if the network is slow");
}

void CommandRun::finishEnded(const CallText& text, const CallEnd& end) const {
  try {
    failEnded(text, end);
  } catch (const CommandResult& result) {
    std::_Exit(show(result, m_style));
  }
}

void CommandRun::limitTime(double seconds) {
  if (m_limit == 0 || m_limit > seconds)
    m_limit = seconds;
}

QList<MapInfo> CommandRun::list(bool isLite, bool isPublished) {
  QList<MapInfo> maps;
  const CallText text{"listing maps", isLite ? "GetMapsListLite_NEW_DESKTOP" : "GetMapsList_NEW_DESKTOP",
                      "cannot list the maps"};
  perform(text, [&](ITarnwellService& service) {
    return isLite ? service.getDesktopMapsListLite(isPublished, maps) : service.getDesktopMapsList(isPublished, maps);
  });
  return maps;
}

} // namespace tarnwell
