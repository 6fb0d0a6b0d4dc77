#include "host/CommandRun.h"

#include "host/Credentials.h"
#include "host/Plugin.h"
#include "host/Text.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

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

void CommandRun::note(const QString& line) const {
  if (!m_style.isJson)
    writeError(line);
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
  const QString password =
      readPassword("TARNWELL_PROXY_PASSWORD", {}, QString("Password of %1 at the proxy: ").arg(printable(user)));
  constexpr int mostBytes = 760; // with more, the plug-in sends none
  if (user.toUtf8().size() + password.toUtf8().size() > mostBytes)
    fail(UsageError, QString("user name and password for the proxy have more than %1 bytes").arg(mostBytes),
         "use shorter ones; longer ones cannot be sent");
  m_service->setProxySettings(m_address.proxyHost, m_address.proxyPort, user, password, true);
}

void CommandRun::open() {
  m_settings = readSettings(m_options);
  m_address = readAddress(m_settings);
  constexpr double longest = 1e6;
  m_limits = {readNumber(m_settings, "timeout", longest), readNumber(m_settings, "stall", longest)};
  m_retries = static_cast<int>(readNumber(m_settings, "retries", 100));
  m_service = loadPlugin(m_settings.value("plugin"));
  m_service->setEndPoint(m_settings.value("endpoint"));
  useProxy();
}

void CommandRun::logIn() {
  open();
  if (user().isEmpty())
    fail(UsageError, "no user name given", "name your account with --user or TARNWELL_USER");
  const QString password = readPassword("TARNWELL_PASSWORD", m_settings.value("password-command"),
                                        QString("Password of %1: ").arg(printable(user())));
  perform({"logging in", QString("cannot log in as %1").arg(quoted(user())), true},
          [&](ITarnwellService& service) { return service.login(user(), password); });
}

void CommandRun::perform(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size) {
  std::chrono::milliseconds pause(250);
  constexpr std::chrono::milliseconds longestPause(30000);
  for (int left = text.isRepeatable ? m_retries : 0;; left--) {
    try {
      return performOnce(text, call, size);
    } catch (const CommandResult& failed) {
      if (left == 0 || !m_diagnosis.isTemporary)
        throw;
      note(QString("%1; trying again").arg(failed.message));
    }
    std::this_thread::sleep_for(pause);
    pause = std::min(2 * pause, longestPause);
  }
}

void CommandRun::performOnce(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size) {
  const CallEnd end =
      watchCall({text.activity, size}, m_address.peerPort(), m_limits, [this, &call] { return call(*m_service); });
  m_diagnosis = {};
  m_isRequestSent = end.isRunning || end.trace.isSent;
  if (end.isRunning)
    finishEnded(text, end);
  if (end.signal != 0 && end.result == ResultOk)
    fail(FirstSignalStatus - 1 + end.signal, "interrupted after this had succeeded: " + text.activity);
  if (end.signal != 0 || (end.how != CallEnd::Returned && end.result != ResultOk)) {
    m_diagnosis.isTemporary = end.signal == 0;
    failEnded(text, end);
  }
  if (end.result == ResultFailed) {
    m_diagnosis = diagnose(end.trace, m_address);
    fail(ResultFailed, text.failure + ": " + m_diagnosis.cause, m_diagnosis.advice);
  }
  if (end.result != ResultOk)
    fail(end.result, text.failure, end.result == ResultFileExists ? text.conflictAdvice : "");
}

void CommandRun::failEnded(const CallText& text, const CallEnd& end) const {
  if (end.signal != 0)
    fail(FirstSignalStatus - 1 + end.signal, text.failure + ": interrupted");
  const QString peer = QString("%1, port %2").arg(quoted(m_address.peerHost())).arg(m_address.peerPort());
  QString where = peer + " did not complete its response";
  if (end.progress.phase == CallProgress::Connecting)
    where = peer + " did not accept the connection";
  else if (end.progress.phase != CallProgress::Connected)
    where = QString("there was no connection to %1, perhaps its name is not found").arg(peer);
  if (end.how == CallEnd::Stalled)
    fail(ResultFailed,
         QString("%1: %2, and no byte came or went for %3 s").arg(text.failure, where).arg(m_limits.stall),
         "try again, with a longer --stall if the service needs more time");
  fail(ResultFailed, QString("%1: %2 within %3 s").arg(text.failure, where).arg(m_limits.whole),
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
  if (m_limits.whole == 0 || m_limits.whole > seconds)
    m_limits.whole = seconds;
}

QList<MapInfo> CommandRun::list(bool isLite, bool isPublished) {
  QList<MapInfo> maps;
  perform({"listing maps", "cannot list the maps", true}, [&](ITarnwellService& service) {
    return isLite ? service.getDesktopMapsListLite(isPublished, maps) : service.getDesktopMapsList(isPublished, maps);
  });
  return maps;
}

} // namespace tarnwell
