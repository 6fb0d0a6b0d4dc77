#include "host/Settings.h"

#include "Deployment.h"
#include "host/Text.h"

#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QSettings>
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
     "User of the service; default: TARNWELL_USER. The password comes from TARNWELL_PASSWORD or the terminal.",
     "TARNWELL_USER", ""},
    {"proxy", "HOST:PORT", "HTTP proxy.", nullptr, ""},
    {"proxy-user", "NAME", "User at the proxy; the password comes from TARNWELL_PROXY_PASSWORD or the terminal.",
     nullptr, ""},
    {"timeout", "SECONDS", "End a call that takes longer. Default: no limit.", nullptr, ""},
    {"plugin", "FILE", "The plug-in's file. Default: libtarnwell.so beside this program, else the installed one.",
     nullptr, ""},
};

/// A message about an unknown key in the current group of `file`; empty when there is none.
QString unknownKey(const QSettings& file) {
  for (const QString& key : file.childKeys()) {
    const bool isKnown = std::any_of(std::begin(settingKinds), std::end(settingKinds),
                                     [&key](const SettingKind& kind) { return key == kind.name; });
    if (!isKnown)
      return QString("%1 has an unknown key %2").arg(quoted(file.fileName()), quoted(key));
  }
  return {};
}

/// The text of a key. QSettings reads a value with commas as a list.
QString textOf(const QSettings& file, const QString& key) { return file.value(key).toStringList().join(", "); }

Setting settingOf(const SettingKind& kind, const QCommandLineParser& options, const QSettings& file) {
  const QString name = kind.name;
  const QString profile = options.value("profile");
  const QString profileKey = profile + '/' + name;
  if (options.isSet(name))
    return {name, options.value(name), "option"};
  if (!profile.isEmpty() && file.contains(profileKey))
    return {name, textOf(file, profileKey), "profile " + profile};
  if (kind.variable != nullptr && !qEnvironmentVariableIsEmpty(kind.variable))
    return {name, QString::fromUtf8(qgetenv(kind.variable)), QString("variable %1").arg(kind.variable)};
  if (file.contains(name))
    return {name, textOf(file, name), "configuration file"};
  return {name, kind.fallback, {}};
}

CommandResult readEndpoint(const QString& text, QUrl& endpoint) {
  constexpr char advice[] = "give a URL such as http://maps.example/service/desktopservice.asmx";
  if (std::any_of(text.begin(), text.end(), [](QChar unit) { return unit.isSpace() || !unit.isPrint(); }))
    return failure(UsageError, "the endpoint has blanks or control characters", advice);
  endpoint = QUrl(text.isEmpty() ? TARNWELL_PRODUCTION_ENDPOINT : text, QUrl::StrictMode);
  if (!endpoint.userInfo().isEmpty() || text.contains('@'))
    return failure(UsageError, "the endpoint has a user name or password, which no call would use", advice);
  if (!endpoint.isValid() || endpoint.host().isEmpty())
    return failure(UsageError, QString("the endpoint %1 is no URL with a host").arg(quoted(text)), advice);
  if (endpoint.scheme() != "http") // QUrl has it in lower case
    return failure(UsageError, QString("the endpoint %1 does not begin with http://").arg(quoted(text)), advice);
  return {};
}

/// `text`: "HOST:PORT", an IPv6 address in brackets; empty for no proxy.
CommandResult readProxy(const QString& text, ServiceAddress& address) {
  if (text.isEmpty())
    return {};
  const QUrl url("http://" + text, QUrl::StrictMode);
  address.proxyHost = url.host();
  address.proxyPort = url.port(0);
  if (address.proxyHost.isEmpty() || address.proxyPort < 1 || !url.userInfo().isEmpty() || !url.path().isEmpty()) {
    return failure(UsageError, QString("%1 is no proxy address").arg(quoted(withoutUserInfo(text))),
                   "give host and port, as in --proxy proxy.example:3128, and a user with --proxy-user");
  }
  return {};
}

} // namespace

QString Settings::value(const char* name) const {
  const auto found =
      std::find_if(all.begin(), all.end(), [name](const Setting& setting) { return setting.name == name; });
  return found == all.end() ? QString() : found->value;
}

QList<QCommandLineOption> settingOptions() {
  QList<QCommandLineOption> options;
  for (const SettingKind& kind : settingKinds)
    options += QCommandLineOption(kind.name, kind.help, kind.valueName);
  options += {"profile", "Use this section of the configuration file, see 'tarnwell config'.", "NAME"};
  return options;
}

CommandResult readSettings(const QCommandLineParser& options, Settings& settings) {
  QSettings file(QSettings::IniFormat, QSettings::UserScope, "tarnwell", "tarnwell");
  file.setFallbacksEnabled(false);
  file.setIniCodec("UTF-8");
  settings.file = file.fileName();
  settings.profiles = file.childGroups();
  const QFileInfo info(settings.file);
  if (file.status() != QSettings::NoError || (info.exists() && !info.isReadable()))
    return failure(LocalError, QString("cannot read the configuration file %1").arg(quoted(settings.file)),
                   "check its permissions and its form: KEY=VALUE lines below [PROFILE] headings");
  const QString profile = options.value("profile");
  if (options.isSet("profile") && !settings.profiles.contains(profile))
    return failure(UsageError, QString("%1 has no profile %2").arg(quoted(settings.file), quoted(profile)),
                   "'tarnwell config' lists the profiles");
  QString wrong = unknownKey(file);
  file.beginGroup(profile);
  if (wrong.isEmpty())
    wrong = unknownKey(file);
  file.endGroup();
  if (!wrong.isEmpty())
    return failure(UsageError, wrong, "the keys are the names of the options: endpoint, user, proxy and so on");
  for (const SettingKind& kind : settingKinds)
    settings.all += settingOf(kind, options, file);
  return {};
}

CommandResult readAddress(const Settings& settings, ServiceAddress& address) {
  CommandResult read = readEndpoint(settings.value("endpoint"), address.endpoint);
  if (!read.failed())
    read = readProxy(settings.value("proxy"), address);
  if (!read.failed() && !settings.value("proxy-user").isEmpty() && !address.hasProxy())
    return failure(UsageError, "--proxy-user needs --proxy");
  return read;
}

CommandResult readTimeout(const Settings& settings, double& seconds) {
  const QString text = settings.value("timeout");
  bool isNumber = true;
  seconds = text.isEmpty() ? 0 : text.toDouble(&isNumber);
  if (!isNumber || (!text.isEmpty() && !(seconds > 0 && seconds < 1e6)))
    return failure(UsageError, QString("--timeout takes seconds, not %1").arg(quoted(text)),
                   "for example --timeout 30");
  return {};
}

QString withoutUserInfo(const QString& value) {
  static const QRegularExpression userInfo("(^|//).*@");
  return QString(value).replace(userInfo, "\\1...@");
}

} // namespace tarnwell
