// One run of a command: its options and arguments, the service, the login, and calls. One thread.
#pragma once

#include "host/Diagnosis.h"
#include "service/ITarnwellService.h"

#include <QtCore/QStringList>
#include <functional>
#include <memory>

namespace tarnwell {

/// What is said of a call while it runs and when it fails.
struct CallText {
  /// A participle, for the terminal: "listing maps".
  const char* activity;
  /// The operation's name on the wire.
  const char* operation;
  /// For messages: "cannot list the maps".
  QString failure;
};

struct CallEnd;

class CommandRun {
public:
  /// `options` must outlive the run. Nothing is loaded or sent before logIn(), or open() for calls without login.
  CommandRun(const QCommandLineParser& options, const QStringList& commandLine)
      : m_options(options), m_command(commandLine.value(0)), m_arguments(commandLine.mid(1)) {}

  [[nodiscard]] bool isSet(const char* option) const { return m_options.isSet(option); }
  [[nodiscard]] QString value(const char* option) const { return m_options.value(option); }
  /// Sets `number` to the value of `option`, or leaves it when the option is not given; a UsageError for other text.
  [[nodiscard]] CommandResult number(const char* option, int& number) const;
  /// The positional arguments after the command's name; empty when it was left out.
  [[nodiscard]] QString argument(int position) const { return m_arguments.value(position); }
  [[nodiscard]] QStringList arguments() const { return m_arguments; }
  /// The settings, for showing them.
  [[nodiscard]] CommandResult settings(Settings& settings) const { return readSettings(m_options, settings); }
  /// The user that logIn() logged in.
  [[nodiscard]] QString user() const { return m_settings.value("user"); }

  /// Loads the plug-in and points it at the endpoint and proxy of the settings. Sends nothing.
  [[nodiscard]] CommandResult open();
  /// Opens and logs in. A failure carries the login's own result.
  [[nodiscard]] CommandResult logIn();

  /// Makes `call` of the service, which open() or logIn() has set up, on another thread, and waits for its result,
  /// which may be a ServiceResult only. A failed call is looked into: the result names the cause, a time-out or the
  /// signal. `size`: about as many bytes as the call sends. Ends the process when the call can be neither awaited nor
  /// ended.
  [[nodiscard]] CommandResult perform(const CallText& text, const std::function<int(ITarnwellService&)>& call,
                                      qint64 size = 0);
  /// Whether the latest perform() failed although the service can be reached and answers.
  [[nodiscard]] bool isServiceAnswering() const { return m_isAnswering; }
  /// Lifts a time limit that is longer than `seconds` to it, or sets it, for what follows a failure.
  void limitTime(double seconds);

  /// Sets `maps` to the user's maps, with previews unless `isLite`.
  [[nodiscard]] CommandResult list(bool isLite, bool isPublished, QList<MapInfo>& maps);

private:
  CommandResult useProxy();
  CommandResult explain(const CallText& text, qint64 size);
  CommandResult ended(const CallText& text, const CallEnd& end) const;
  /// Shows `result` and ends the process at once, destroying nothing.
  [[noreturn]] void finish(const CommandResult& result) const;

  const QCommandLineParser& m_options;
  QString m_command;
  QStringList m_arguments;
  Settings m_settings;
  ServiceAddress m_address;
  ProxyLogin m_proxyLogin;
  double m_limit = 0;
  bool m_isAnswering = false;
  std::unique_ptr<ITarnwellService> m_service;
};

} // namespace tarnwell
