#include "host/Settings.h"

#include "Deployment.h"
#include "host/ConfigurationFile.h"
#include "host/Text.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStandardPaths>
#include <algorithm>

namespace tarnwell {

namespace {

struct SettingKind {
  const char* name;
  const char* valueName;
  const char* help;
  /// The environment variable; null for none.
  const char* variable;
  const char* fallback;
};

constexpr SettingKind settingKinds[] = {
    {"endpoint", "URL",
     "The service's http URL; an empty text means the production service. Default: TARNWELL_ENDPOINT, or the test "
     "service.",
     "TARNWELL_ENDPOINT", TARNWELL_TEST_ENDPOINT},
    {"user", "NAME",
     "User of the service; default: TARNWELL_USER. The password comes from TARNWELL_PASSWORD, --password-command or "
     "the "
     "terminal.",
     "TARNWELL_USER", ""},
    {"password-command", "COMMAND", "A program, with its arguments, whose first line of output is the user's password.",
     nullptr, ""},
    {"proxy", "HOST:PORT", "HTTP proxy.", nullptr, ""},
    {"proxy-user", "NAME", "User at the proxy; the password comes from TARNWELL_PROXY_PASSWORD or the terminal.",
     nullptr, ""},
    {"timeout", "SECONDS", "End a call that takes longer. Default: no limit.", nullptr, ""},
    {"stall", "SECONDS", "End a call when no byte comes or goes for so long. Default: no limit.", nullptr, ""},
    {"retries", "N", "Repeat logins, listings and downloads so often when the network fails. Default: 0.", nullptr, ""},
    {"plugin", "FILE", "The plug-in's file. Default: libtarnwell.so beside this program, else the installed one.",
     nullptr, ""},
};

Setting settingOf(const SettingKind& kind, const QCommandLineParser& options, const ConfigurationFile& file,
                  const QString& profile) {
  const QString name = kind.name;
  if (options.isSet(name))
    return {name, options.value(name), "option"};
  const auto inFile = [&](const QString& section, const QString& where) {
    const ConfigurationFile::Value value = file.values[section][name];
    return Setting{name, value.text, QString("%1, line %2").arg(where, QString::number(value.line))};
  };
  if (!profile.isEmpty() && file.values[profile].contains(name))
    return inFile(profile, "profile " + profile);
  if (kind.variable != nullptr && !qEnvironmentVariableIsEmpty(kind.variable))
    return {name, QString::fromUtf8(qgetenv(kind.variable)), QString("variable %1").arg(kind.variable)};
  if (file.values[{}].contains(name))
    return inFile({}, "configuration file");
  return {name, kind.fallback, {}};
}

/// What `read` makes of the setting's value; its failure also tells where a value stands that no option has.
template <class Read> auto readSetting(const Setting& setting, Read read) try {
  return read(setting.value);
} catch (CommandResult& failed) {
  if (!setting.origin.isEmpty() && setting.origin != "option")
    failed.message += QString(" (%1)").arg(setting.origin);
  throw;
}

QUrl readEndpoint(const QString& text) {
  constexpr char advice[] = "give a URL such as http://maps.example/service/desktopservice.asmx";
  if (std::any_of(text.begin(), text.end(), [](QChar unit) { return unit.isSpace() || !unit.isPrint(); }))
    fail(UsageError, "the endpoint has blanks or control characters", advice);
  const QUrl endpoint(text, QUrl::StrictMode);
  if (!endpoint.userInfo().isEmpty() || text.contains('@'))
    fail(UsageError, "the endpoint has a user name or password, which no call would use", advice);
  if (!endpoint.isValid() || endpoint.host().isEmpty())
    fail(UsageError, QString("the endpoint %1 is no URL with a host").arg(quoted(text)), advice);
  if (endpoint.scheme() != "http") // QUrl has it in lower case
    fail(UsageError, QString("the endpoint %1 does not begin with http://").arg(quoted(text)), advice);
  return endpoint;
}

/// `text`: "HOST:PORT", an IPv6 address in brackets; empty for no proxy.
void readProxy(const QString& text, ServiceAddress& address) {
  if (text.isEmpty())
    return;
  const QUrl url("http://" + text, QUrl::StrictMode);
  address.proxyHost = url.host();
  address.proxyPort = url.port(0);
  if (address.proxyHost.isEmpty() || address.proxyPort < 1 || !url.userInfo().isEmpty() || !url.path().isEmpty()) {
    fail(UsageError, QString("%1 is no proxy address").arg(quoted(withoutUserInfo(text))),
         "give host and port, as in --proxy proxy.example:3128, and a user with --proxy-user");
  }
}

} // namespace

const Setting& Settings::find(const char* name) const {
  return *std::find_if(all.begin(), all.end(), [name](const Setting& setting) { return setting.name == name; });
}

QList<QCommandLineOption> settingOptions() {
  QList<QCommandLineOption> options;
  for (const SettingKind& kind : settingKinds)
    options += QCommandLineOption(kind.name, kind.help, kind.valueName);
  options += {"profile", "Use this section of the configuration file; default: TARNWELL_PROFILE.", "NAME"};
  return options;
}

Settings readSettings(const QCommandLineParser& options) {
  QStringList keys;
  for (const SettingKind& kind : settingKinds)
    keys += kind.name;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  const ConfigurationFile file = readConfigurationFile(folder + "/tarnwell/tarnwell.ini", keys);
  const QString profile =
      options.isSet("profile") ? options.value("profile") : QString::fromUtf8(qgetenv("TARNWELL_PROFILE"));
  if (!profile.isEmpty() && !file.sections.contains(profile))
    fail(UsageError, QString("%1 has no profile %2").arg(quoted(file.path), quoted(profile)),
         "'tarnwell config --profile \"\"' lists the profiles");
  Settings settings;
  settings.file = file.path;
  settings.profiles = file.sections;
  for (const SettingKind& kind : settingKinds) {
    settings.all += settingOf(kind, options, file, profile);
    if (settings.all.last().name == "endpoint" && settings.all.last().value.isEmpty())
      settings.all.last().value = TARNWELL_PRODUCTION_ENDPOINT;
  }
  return settings;
}

ServiceAddress readAddress(const Settings& settings) {
  ServiceAddress address;
  address.endpoint = readSetting(settings.find("endpoint"), readEndpoint);
  readSetting(settings.find("proxy"), [&](const QString& text) { readProxy(text, address); });
  if (!settings.value("proxy-user").isEmpty() && !address.hasProxy())
    fail(UsageError, "--proxy-user needs --proxy");
  return address;
}

double readNumber(const Settings& settings, const char* name, double most) {
  return readSetting(settings.find(name), [&](const QString& text) {
    bool isNumber = true;
    const double number = text.isEmpty() ? 0 : text.toDouble(&isNumber);
    if (!isNumber || !(number >= 0 && number <= most))
      fail(UsageError,
           QString("%1 takes a number from 0 to %2, not %3").arg(name).arg(most, 0, 'f', 0).arg(quoted(text)),
           QString("for example --%1 30").arg(name));
    return number;
  });
}

QString withoutUserInfo(const QString& value) {
  static const QRegularExpression userInfo("(^|//).*@");
  return QString(value).replace(userInfo, "\\1...@");
}

} // namespace tarnwell
