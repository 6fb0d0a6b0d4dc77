// Where the service is, how it is reached and as whom: from options, environment variables and a configuration file
// with profiles. One thread.
#pragma once

#include "host/CommandResult.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QList>
#include <QtCore/QUrl>

namespace tarnwell {

/// One setting as it counts for this command.
struct Setting {
  /// That of the option and of the key in the configuration file.
  QString name;
  QString value;
  /// Where the value is from: "option", "profile NAME", "variable NAME", "configuration file"; empty for a default.
  QString origin;
};

/// A setting comes from the first of these that has it: its option; the profile that --profile names; its environment
/// variable, unless that is empty; the configuration file outside its profiles; its default.
struct Settings {
  /// In the order of the help.
  QList<Setting> all;
  /// The configuration file, whether it exists or not, and the names of its profiles.
  QString file;
  QStringList profiles;

  [[nodiscard]] QString value(const char* name) const;
};

/// The address that calls connect to and what they ask there.
struct ServiceAddress {
  QUrl endpoint;
  /// Empty without a proxy.
  QString proxyHost;
  int proxyPort = 0;

  [[nodiscard]] bool hasProxy() const { return !proxyHost.isEmpty(); }
  /// The host and TCP port of the connection: the proxy's if there is one.
  [[nodiscard]] QString peerHost() const { return hasProxy() ? proxyHost : endpoint.host(); }
  [[nodiscard]] int peerPort() const { return hasProxy() ? proxyPort : endpoint.port(80); }
};

/// The options that every command takes for its settings.
[[nodiscard]] QList<QCommandLineOption> settingOptions();

/// Reads all settings. A UsageError for a profile or a key of the file that does not exist, a LocalError for a file
/// that cannot be read. Values are not checked.
[[nodiscard]] CommandResult readSettings(const QCommandLineParser& options, Settings& settings);

/// Sets `address` by endpoint and proxy. A UsageError for those that no call could use: anything but http, blanks or
/// control characters in the endpoint, a user name or password in it, a proxy that is not HOST:PORT. The message never
/// repeats a text that may hold a password.
[[nodiscard]] CommandResult readAddress(const Settings& settings, ServiceAddress& address);

/// Sets `seconds` to --timeout, 0 for none; a UsageError for what is no number of seconds.
[[nodiscard]] CommandResult readTimeout(const Settings& settings, double& seconds);

/// `value` for people, without the user name and password that an address may carry.
[[nodiscard]] QString withoutUserInfo(const QString& value);

} // namespace tarnwell
