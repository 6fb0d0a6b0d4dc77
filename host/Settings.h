// The settings: endpoint, proxy, user, time limits and plug-in, from options, environment variables and a configuration
// file with profiles. One thread.
#pragma once

#include "host/CommandResult.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QList>
#include <QtCore/QUrl>

namespace tarnwell {

/// One setting of this command.
struct Setting {
  /// The name of the option and of the key in the configuration file.
  QString name;
  QString value;
  /// The value's origin: "option", "variable NAME", "profile NAME, line N" or "configuration file, line N"; empty for a
  /// default.
  QString origin;
};

/// All settings. Each has the value of the first of these that is given: its option; the profile that --profile or
/// TARNWELL_PROFILE names; its environment variable, unless that is empty; the configuration file outside its profiles;
/// its default.
struct Settings {
  /// In the order of the help.
  QList<Setting> all;
  /// The path of the configuration file, which need not exist, and the names of its profiles.
  QString file;
  QStringList profiles;

  /// The setting `name`, which there is.
  [[nodiscard]] const Setting& find(const char* name) const;
  /// Its value.
  [[nodiscard]] QString value(const char* name) const { return find(name).value; }
};

/// The endpoint, and the proxy to connect to instead of the endpoint's host.
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

/// The options for settings, which every command takes.
[[nodiscard]] QList<QCommandLineOption> settingOptions();

/// Reads all settings, and does not check their values. Fails with a UsageError for a profile that does not exist and,
/// with its line, for a mistake anywhere in the file; with a LocalError for a file that cannot be read.
[[nodiscard]] Settings readSettings(const QCommandLineParser& options);

/// The address of the settings. Fails with a UsageError for an endpoint that is not http, has blanks, control
/// characters, a user name or a password, for a proxy that is not HOST:PORT, and for a proxy's user without a proxy.
/// The message has the origin of a wrong value, and no text that may contain a password.
[[nodiscard]] ServiceAddress readAddress(const Settings& settings);

/// The value of `name`, 0 for none. Fails with a UsageError, which has the value's origin, unless it is a number from 0
/// to `most`.
[[nodiscard]] double readNumber(const Settings& settings, const char* name, double most);

/// `value` with "..." in place of the user name and password that an address may have.
[[nodiscard]] QString withoutUserInfo(const QString& value);

} // namespace tarnwell
