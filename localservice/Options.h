// The command line of the local service.
#pragma once

#include "localservice/Rehearsal.h"

#include <QtCore/QStringList>
#include <cstdint>
#include <optional>
#include <string>

namespace localservice {

/// What the command line asks for. An empty text: not asked for.
struct Options {
  std::string information; ///< help, version or a description of the protocol, to be printed instead of anything else
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

  /// Also changes and lists can be asked for together with the service.
  bool serve = false;
  std::string host = "127.0.0.1";
  int port = 0;
  std::uint64_t longestRequest = 0; ///< bytes of content
  bool log = false;
  int delay = 0; ///< milliseconds before each answer
  Rehearsal rehearsal;

  /// The host as URLs have it: IPv6 addresses in brackets.
  std::string hostInUrl() const { return host.find(':') == std::string::npos ? host : "[" + host + "]"; }
  /// Whether a database that does not exist is to be made: not for looking into one.
  bool createsDatabase() const { return serve || !addedAccount.empty() || !updateVersion.empty(); }
};

/// `arguments` begin with the program's name. Throws std::invalid_argument, with a text for people, for a command line
/// that cannot be followed. Needs a QCoreApplication.
Options parseOptions(const QStringList& arguments);

} // namespace localservice
