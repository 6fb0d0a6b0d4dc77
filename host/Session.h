// What one run of a command works with: its options and arguments, the service, the login, and maps by name. One
// thread.
#pragma once

#include "host/Connection.h"
#include "host/Progress.h"

#include <QtCore/QStringList>

namespace tarnwell {

class Session {
public:
  /// `options` must outlive the session. Nothing is loaded or sent before logIn(), or open() for calls without login.
  Session(const QCommandLineParser& options, const QStringList& arguments)
      : m_options(options), m_arguments(arguments) {}

  [[nodiscard]] bool isSet(const char* option) const { return m_options.isSet(option); }
  [[nodiscard]] QString value(const char* option) const { return m_options.value(option); }
  /// Sets `number` to the value of `option`, or leaves it when the option is not given; a UsageError for other text.
  [[nodiscard]] Outcome number(const char* option, int& number) const;
  /// The positional arguments after the command's name; empty when it was left out.
  [[nodiscard]] QString argument(int position) const { return m_arguments.value(position); }

  [[nodiscard]] Outcome open() { return openService(m_options, m_service); }
  /// Opens and logs in as --user says. On failure the outcome carries the login's own result.
  [[nodiscard]] Outcome logIn();

  /// Calls the service, which open() or logIn() has set up, and shows meanwhile that `activity` is going on.
  template <typename Call> [[nodiscard]] auto during(const char* activity, Call call) {
    const Progress progress(activity);
    return call(*m_service);
  }

  /// Sets `info` to the listed map that `map` names: by identifier, or by a name that one map alone has. An identifier
  /// that is not listed is taken as it is, since what the service says about that map is the answer. Returns a
  /// UsageError for a name without a map or with several, or the result of a listing that failed.
  [[nodiscard]] Outcome find(const QString& map, MapInfo& info);

private:
  const QCommandLineParser& m_options;
  QStringList m_arguments;
  std::unique_ptr<ITarnwellService> m_service;
};

} // namespace tarnwell
