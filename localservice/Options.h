// The command line of the local service.
#pragma once

#include <string>

namespace localservice {

/// What the command line asks for. An empty text: not asked for.
struct Options {
  std::string database;
  std::string host = "127.0.0.1";
  std::string port = "0";
  bool readOnly = false;

  std::string account;
  bool premium = true;
  std::string startCollaboration;
  std::string endCollaboration;
  std::string updateVersion;
  std::string updateUrl;
  bool listMaps = false;
  bool listReports = false;

  /// Also changes and lists can be asked for together with the service.
  bool serve = false;
  bool help = false;
  std::string describe; ///< "wsdl" or "tables"; then nothing else is done

  /// The host as URLs have it: IPv6 addresses in brackets.
  std::string hostInUrl() const { return host.find(':') == std::string::npos ? host : "[" + host + "]"; }
};

/// For people: what the program does and every option.
extern const char* const helpText;

/// Throws std::invalid_argument, with a text for people, for a command line that cannot be meant.
Options parseOptions(int argc, char** argv);

} // namespace localservice
