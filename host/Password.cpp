#include "host/Password.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tarnwell {

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

/// The controlling terminal with its echo off; both as before at the end, when a signal that came meanwhile is obeyed.
class SilentTerminal {
public:
  SilentTerminal() : m_file(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (m_file < 0)
      return;
    struct sigaction action = {};
    // Without SA_RESTART: a signal ends the reading.
    action.sa_handler = [](int number) { caughtSignal = number; };
    for (size_t i = 0; i < std::size(endingSignals); i++)
      sigaction(endingSignals[i], &action, &m_actions[i]);
    tcgetattr(m_file, &m_settings);
    termios silent = m_settings;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(m_file, TCSAFLUSH, &silent);
  }

  ~SilentTerminal() {
    if (m_file < 0)
      return;
    tcsetattr(m_file, TCSAFLUSH, &m_settings);
    write("\n");
    close(m_file);
    for (size_t i = 0; i < std::size(endingSignals); i++)
      sigaction(endingSignals[i], &m_actions[i], nullptr);
    if (caughtSignal != 0)
      raise(caughtSignal);
  }

  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

  [[nodiscard]] bool isOpen() const { return m_file >= 0; }

  void write(const QByteArray& text) const {
    // A prompt that cannot be shown changes nothing: the answer is still read.
    [[maybe_unused]] const ssize_t written = ::write(m_file, text.constData(), static_cast<size_t>(text.size()));
  }

  /// One line without its end; what was typed so far when the terminal or a signal ends the reading.
  [[nodiscard]] QByteArray readLine() const {
    QByteArray line;
    char next = 0;
    while (read(m_file, &next, 1) == 1 && next != '\n')
      line += next;
    return line;
  }

private:
  static constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

  int m_file;
  termios m_settings = {};
  struct sigaction m_actions[std::size(endingSignals)] = {};
};

} // namespace

Outcome readPassword(const char* variable, const QString& prompt, QString& password) {
  if (qEnvironmentVariableIsSet(variable)) {
    password = QString::fromUtf8(qgetenv(variable));
    return {};
  }
  const SilentTerminal terminal;
  if (!terminal.isOpen()) {
    return failure(UsageError, "there is no terminal to ask for the password",
                   QString("set the environment variable %1").arg(variable));
  }
  terminal.write(prompt.toUtf8());
  password = QString::fromUtf8(terminal.readLine());
  return {};
}

} // namespace tarnwell
