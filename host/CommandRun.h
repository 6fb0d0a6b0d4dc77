// What a command works with: its options and arguments, the plug-in's service, login and calls. One thread.
#pragma once

#include "host/Diagnosis.h"
#include "host/WatchedCall.h"
#include "service/ITarnwellService.h"

#include <QtCore/QStringList>
#include <functional>
#include <memory>

namespace tarnwell {

/// A call of the service, for messages.
struct CallText {
  /// A participle, for the terminal: "listing maps".
  QString activity;
  /// "cannot list the maps".
  QString failure;
  /// The call changes nothing on the service: --retries repeats it.
  bool isRepeatable = false;
  /// What to try after ResultFileExists; empty: what the table of results says.
  const char* conflictAdvice = "";
};

/// One run of one command. Everything that fails throws a CommandResult, see fail().
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

  /// Shows people a line now, on standard error.
  void note(const QString& line) const;

  /// Loads the plug-in and points it at the endpoint and proxy of the settings. Sends nothing.
  void open();
  /// Opens and logs in. A failure carries the login's own result.
  void logIn();

  /// Makes `call`, which returns a ServiceResult, on another thread, and waits for it. Fails with the call's result and
  /// the cause, a time limit or a signal. `size`: the bytes that the call sends at least, for the progress. Shows the
  /// result and ends the process when the call does not return although it was ended. Needs open() or logIn() before.
  void perform(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size = 0);
  /// Why the latest perform() failed; without a cause after any other result than ResultFailed.
  [[nodiscard]] const Diagnosis& diagnosis() const { return m_diagnosis; }
  /// Whether the service may have got the whole request of the latest perform().
  [[nodiscard]] bool isRequestSent() const { return m_isRequestSent; }
  /// Limits the time of each following call to `seconds`, unless its limit is shorter already.
  void limitTime(double seconds);

  /// The user's maps, with previews unless `isLite`.
  [[nodiscard]] QList<MapInfo> list(bool isLite, bool isPublished);

private:
  void useProxy();
  void performOnce(const CallText& text, const std::function<int(ITarnwellService&)>& call, qint64 size);
  /// Fails because a time limit or a signal has ended a call.
  [[noreturn]] void failEnded(const CallText& text, const CallEnd& end) const;
  /// The same; shows the result and ends the process without destructors, because a thread may still use the objects.
  [[noreturn]] void finishEnded(const CallText& text, const CallEnd& end) const;

  const QCommandLineParser& m_options;
  OutputStyle m_style;
  QStringList m_arguments;
  Settings m_settings;
  ServiceAddress m_address;
  TimeLimits m_limits;
  int m_retries = 0;
  Diagnosis m_diagnosis;
  bool m_isRequestSent = false;
  std::unique_ptr<ITarnwellService> m_service;
};

} // namespace tarnwell
