#include "host/Commands.h"

#include "host/Files.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>

namespace tarnwell {

Outcome logIn(Session& session) {
  Outcome outcome = session.logIn();
  if (outcome.failed())
    return outcome;
  outcome.message = QString("logged in as %1").arg(quoted(session.value("user")));
  outcome.data["user"] = session.value("user");
  return outcome;
}

Outcome checkForUpdates(Session& session) {
  int liveUpdate = 0;
  int application = 0;
  Outcome outcome = session.number("live-update-type", liveUpdate);
  if (!outcome.failed())
    outcome = session.number("application-type", application);
  if (!outcome.failed())
    outcome = session.open();
  if (outcome.failed())
    return outcome;
  const QString version = session.argument(0);
  QString newest;
  QString url;
  const bool isOffered = session.during("asking for updates", [&](ITarnwellService& service) {
    const bool offered = session.isSet("application-type")
                             ? service.checkForUpdatesExtended(version, liveUpdate, application)
                             : service.checkForUpdates(version, liveUpdate);
    newest = service.getSetupVersion();
    url = service.getSetupUrl();
    return offered;
  });
  if (!isOffered) {
    return failure(ResultFailed, QString("no newer setup than %1 is offered").arg(quoted(version)),
                   "if the service should know of one, check --endpoint, the network and --proxy");
  }
  outcome.message = QString("setup %1 is offered").arg(quoted(newest));
  outcome.text = QString("%1  %2\n").arg(printable(newest), printable(url));
  outcome.data = {{"version", newest}, {"url", url}};
  return outcome;
}

Outcome sendReport(Session& session) {
  const QString fileName = session.argument(2);
  QByteArray attachment;
  if (!fileName.isEmpty()) {
    Outcome read = readFile(fileName, attachment);
    if (read.failed())
      return read;
  }
  Outcome outcome = session.open();
  if (outcome.failed())
    return outcome;
  const bool isTaken = session.during("sending the report", [&](ITarnwellService& service) {
    return service.sendCrashReport(session.argument(0), session.argument(1), QFileInfo(fileName).fileName(),
                                   attachment);
  });
  if (!isTaken)
    return failure(ResultFailed, "the report was not sent");
  outcome.message = QString("sent the report with %1 attached").arg(humanSize(attachment.size()));
  outcome.data["attachedBytes"] = attachment.size();
  return outcome;
}

} // namespace tarnwell
