// The command line of the local service. Read and checked once, then constant: any thread.
#pragma once

#include "localservice/FaultInjection.h"

#include <QtCore/QCommandLineParser>
#include <cstdint>
#include <string>

namespace localservice {

/// What the command line asks for. Options are read by their names where they are used.
class Options {
public:
  /// `arguments` begin with the program's name. Throws std::invalid_argument, with a text for people, for a command
  /// line that cannot be followed. Needs a QCoreApplication.
  explicit Options(const QStringList& arguments);

  bool isSet(const char* name) const { return parser.isSet(name); }
  /// The option's value or its default, UTF-8; empty when it has neither.
  std::string text(const char* name) const { return parser.value(name).toStdString(); }
  /// The value of an option that takes a number.
  int number(const char* name) const { return parser.value(name).toInt(); }
  /// That of an option that takes a number of MiB, in bytes.
  std::uint64_t bytes(const char* name) const { return static_cast<std::uint64_t>(number(name)) << 20; }
  /// Help, version or a description of the protocol: print it and do nothing else. Otherwise empty.
  std::string information() const;

  std::string host = "127.0.0.1"; ///< without brackets
  int port = 0;
  FaultInjection faultInjection;

  /// The host for a URL: an IPv6 address in brackets.
  std::string hostInUrl() const { return host.find(':') == std::string::npos ? host : "[" + host + "]"; }

private:
  QCommandLineParser parser;
};

} // namespace localservice
