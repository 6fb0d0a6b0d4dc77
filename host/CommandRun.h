// What a command works with: its options and arguments, the plug-in's service, login and calls. One thread.
#pragma once

#include "host/Diagnosis.h"
#include "service/ITarnwellService.h"

#include <QtCore/QStringList>
#include <functional>
#include <memory>

namespace tarnwell {

/// Texts about a call, for while it runs and for its failure.
struct CallText {
  /// A participle, for the terminal: "listing maps".
  const char* activity;
  /// The operation's name on the wire.
  const char* operation;
  /// For messages: "cannot list the maps".
  QString failure;
};

struct CallEnd;

/// One run of one command.
class CommandRun {
public:
  /// `options` must outlive the run. Loads and sends nothing; a command begins with logIn(), or with open() for calls
  /// that need no login.
  CommandRun(const QCommandLineParser& options, const QStringList& commandLine)
      : m_options(options), m_command(commandLine.value(0)), m_arguments(commandLine.mid(1)) {}

  [[nodiscard]] bool isSet(const char* option) const { return m_options.isSet(option); }
  [[nodiscard]] QString value(const char* option) const { return m_options.value(option); }
  /// Sets `number` to the value of `option`, or leaves it when the option is not given; a UsageError for other text.
  [[nodiscard]] CommandResult readNumber(const char* option, int& number) const;
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

  /// Makes `call`, which returns a ServiceResult, on another thread, and waits for it. After a ResultFailed it finds
  /// out the cause, for which it connects to the service again; the message names cause, time-out or signal. `size`:
  /// about as many bytes as the call sends. Shows the result and ends the process when the call does not return
  /// although it was ended. Needs open() or logIn() before.
  [[nodiscard]] CommandResult perform(const CallText& text, const std::function<int(ITarnwellService&)>& call,
                                      qint64 size = 0);
  /// Whether the latest perform() failed although the service answers.
  [[nodiscard]] bool isServiceAnswering() const { return m_isAnswering; }
  /// Limits the time of each following call to `seconds`, unless its limit is shorter already.
  void limitTime(double seconds);

  /// Sets `maps` to the user's maps, with previews unless `isLite`.
  [[nodiscard]] CommandResult list(bool isLite, bool isPublished, QList<MapInfo>& maps);

private:
  CommandResult useProxy();
  CommandResult findCause(const CallText& text, qint64 size);
  /// The result of a call that a time-out or a signal has ended.
  CommandResult endedResult(const CallText& text, const CallEnd& end) const;
  /// Shows `result` and ends the process without destructors: a thread may still use the objects.
  [[noreturn]] void finish(const CommandResult& result) const;

  const QCommandLineParser& m_options;
  QString m_command;
  QStringList m_arguments;
  Settings m_settings;
  ServiceAddress m_address;
  ProxyLogin m_proxyLogin;
  double m_limit = 0; // seconds for each call; 0: none
  bool m_isAnswering = false;
  std::unique_ptr<ITarnwellService> m_service;
};

} // namespace tarnwell
