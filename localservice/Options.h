// The command line of the local service. Read once, then constant: any thread.
#pragma once

#include "localservice/FaultInjection.h"

#include <QtCore/QStringList>
#include <cstdint>
#include <optional>
#include <string>

namespace localservice {

/// What the command line asks for. Empty texts are not asked for.
struct Options {
  std::string information; ///< help, version or a description of the protocol: print it and do nothing else
  std::string database;
  bool readOnly = false;

  std::string addedAccount;
  bool isPremium = true;
  std::string removedAccount;
  std::string startedCollaboration;
  std::string endedCollaboration;
  std::string updateVersion;
  std::string updateUrl;
  bool listAccounts = false;
  bool listMaps = false;
  bool listReports = false;

  /// Serve, after the changes and lists above.
  bool serve = false;
  std::string host = "127.0.0.1";
  int port = 0;
  std::uint64_t longestRequest = 0; ///< bytes of content
  bool log = false;
  int delay = 0; ///< milliseconds before each answer
  FaultInjection faultInjection;

  /// The host for a URL: an IPv6 address in brackets.
  std::string hostInUrl() const { return host.find(':') == std::string::npos ? host : "[" + host + "]"; }
  /// Whether to make a database that does not exist: not for lists and marks alone.
  bool createsDatabase() const { return serve || !addedAccount.empty() || !updateVersion.empty(); }
};

/// `arguments` begin with the program's name. Throws std::invalid_argument, with a text for people, for a command line
/// that cannot be followed. Needs a QCoreApplication.
Options parseOptions(const QStringList& arguments);

} // namespace localservice
