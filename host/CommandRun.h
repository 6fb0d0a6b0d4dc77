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
  /// `options` must outlive the run; its first positional argument is the command's name. Loads and sends nothing; a
  /// command begins with logIn(), or with open() for calls that need no login.
  CommandRun(const QCommandLineParser& options, const OutputStyle& style)
      : m_options(options), m_style(style), m_arguments(options.positionalArguments().mid(1)) {}

  [[nodiscard]] bool isSet(const char* option) const { return m_options.isSet(option); }
  [[nodiscard]] QString value(const char* option) const { return m_options.value(option); }
  /// The number that `option` gives; 0 without the option.
  [[nodiscard]] int number(const char* option) const;
  /// The positional arguments after the command's name; empty when it was left out.
  [[nodiscard]] QString argument(int position) const { return m_arguments.value(position); }
  [[nodiscard]] QStringList arguments() const { return m_arguments; }
  /// The settings, for showing them.
  [[nodiscard]] Settings settings() const { return readSettings(m_options); }
  /// The user that logIn() logged in.
  [[nodiscard]] QString user() const { return m_settings.value("user"); }

  /// Loads the plug-in and points it at the endpoint and proxy of the settings. Sends nothing.
  void open();
  /// Opens and logs in. A failure carries the login's own result.
  void logIn();

  /// Makes `call`, which returns a ServiceResult, on another thread, and waits for it. After a ResultFailed it finds
  /// out the cause, for which it connects to the service again; the message names cause, time-out or signal. `size`:
  /// about as many bytes as the call sends. Shows the result and ends the process when the call does not return
  /// although it was ended. Needs open() or logIn() before.
  void perform(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size = 0);
  /// Whether the latest perform() failed although the service answers.
  [[nodiscard]] bool isServiceAnswering() const { return m_isAnswering; }
  /// Limits the time of each following call to `seconds`, unless its limit is shorter already.
  void limitTime(double seconds);

  /// The user's maps, with previews unless `isLite`.
  [[nodiscard]] QList<MapInfo> list(bool isLite, bool isPublished);

private:
  void useProxy();
  [[noreturn]] void failWithCause(const CallText& text, qint64 size);
  /// Fails because a time-out or a signal has ended a call.
  [[noreturn]] void failEnded(const CallText& text, const CallEnd& end) const;
  /// The same; shows the result and ends the process without destructors, because a thread may still use the objects.
  [[noreturn]] void finishEnded(const CallText& text, const CallEnd& end) const;

  const QCommandLineParser& m_options;
  OutputStyle m_style;
  QStringList m_arguments;
  Settings m_settings;
  ServiceAddress m_address;
  ProxyLogin m_proxyLogin;
  double m_limit = 0; // seconds for each call; 0: none
  bool m_isAnswering = false;
  std::unique_ptr<ITarnwellService> m_service;
};

} // namespace tarnwell
