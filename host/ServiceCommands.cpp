#include "host/ServiceCommands.h"

#include "host/Files.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>

namespace tarnwell {

CommandResult logIn(CommandRun& run) {
  run.logIn();
  CommandResult result;
  result.message = QString("logged in as %1").arg(quoted(run.user()));
  result.data["user"] = run.user();
  return result;
}

CommandResult checkForUpdates(CommandRun& run) {
  const int liveUpdate = run.number("live-update-type");
  const int application = run.number("application-type");
  run.open();
  const QString version = run.argument(0);
  QString newest;
  QString url;
  const auto check = [&](ITarnwellService& service) {
    const bool isOffered = run.isSet("application-type")
                               ? service.checkForUpdatesExtended(version, liveUpdate, application)
                               : service.checkForUpdates(version, liveUpdate);
    newest = service.getSetupVersion();
    url = service.getSetupUrl();
    return isOffered ? ResultOk : ResultFailed;
  };
  CommandResult result;
  try {
    run.perform({"asking for updates", "cannot ask for updates"}, check);
  } catch (const CommandResult&) {
    if (!run.diagnosis().isAnswered)
      throw;
    result.message = QString("no newer setup than %1 is offered").arg(quoted(version));
    result.data["offered"] = false;
    return result;
  }
  result.message = QString("setup %1 is offered").arg(quoted(newest));
  result.text = QString("%1  %2\n").arg(printable(newest), printable(url));
  result.data = {{"offered", true}, {"version", newest}, {"url", url}};
  return result;
}

CommandResult sendReport(CommandRun& run) {
  const QString fileName = run.argument(2);
  const QByteArray attachment = fileName.isEmpty() ? QByteArray() : readFile(fileName);
  run.open();
  const auto send = [&](ITarnwellService& service) {
    const QString attachedName = QFileInfo(fileName).fileName();
    const bool isSent = service.sendCrashReport(run.argument(0), run.argument(1), attachedName, attachment);
    return isSent ? ResultOk : ResultFailed;
  };
  run.perform({"sending the report", "cannot send the report"}, send, qint64{attachment.size()} / 3 * 4);
  CommandResult result;
  result.message = QString("sent the report with %1 attached").arg(humanSize(attachment.size()));
  result.data["attachedBytes"] = attachment.size();
  return result;
}

CommandResult showConfiguration(CommandRun& run) {
  const Settings settings = run.settings();
  CommandResult result;
  QJsonArray rows;
  int width = 0;
  for (const Setting& setting : settings.all)
    width = std::max(width, displayWidth(setting.name));
  for (const Setting& setting : settings.all) {
    const QString shown =
        setting.name == "endpoint" || setting.name == "proxy" ? withoutUserInfo(setting.value) : setting.value;
    result.text += padded(setting.name, width, false) + "  " + printable(shown.isEmpty() ? QString("-") : shown);
    result.text += setting.origin.isEmpty() ? "\n" : QString("  (%1)\n").arg(printable(setting.origin));
    rows += QJsonObject{{"name", setting.name}, {"value", shown}, {"origin", setting.origin}};
  }
  result.text += QString("\nconfiguration file: %1%2\n")
                     .arg(printable(settings.file), QFileInfo::exists(settings.file) ? "" : " (does not exist)");
  result.text += QString("profiles: %1\n").arg(printable(settings.profiles.join(", ")));
  result.data = {
      {"settings", rows}, {"file", settings.file}, {"profiles", QJsonArray::fromStringList(settings.profiles)}};
  return result;
}

} // namespace tarnwell
