#include "localservice/Administration.h"

#include "localservice/Identifier.h"

#include <ctime>
#include <iostream>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

namespace localservice {

namespace {

/// Keeps a terminal from showing what is typed.
class SilentTerminal {
public:
  SilentTerminal() {
    if (!isTerminal)
      return;
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;
  ~SilentTerminal() {
    if (isTerminal)
      tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
  }

private:
  termios before{};
  const bool isTerminal = tcgetattr(STDIN_FILENO, &before) == 0;
};

std::string readPassword(const std::string& account) {
  const SilentTerminal silent;
  const bool asking = isatty(STDIN_FILENO) != 0;
  if (asking)
    std::cerr << "Password for " << account << ": " << std::flush;
  std::string password;
  if (!std::getline(std::cin, password))
    throw std::runtime_error("no password on standard input");
  if (asking)
    std::cerr << '\n';
  return password;
}

void markCollaboration(Store& store, const std::string& map, bool ongoing) {
  if (!map.empty() && !store.markCollaboration(canonicalIdentifier(map.c_str()), ongoing))
    throw std::runtime_error("there is no map with the identifier " + map);
}

const char* shown(const char* text) { return text ? text : ""; }

void printMap(const char* owner, const char* state, const MapRecord& map) {
  std::cout << map.id << '\t' << owner << '\t' << state << '\t' << map.version << '\t' << shown(map.name) << '\n';
}

void printReport(const Report& report) {
  char received[32] = "";
  const std::time_t seconds = report.received;
  tm utc{};
  if (gmtime_r(&seconds, &utc))
    std::strftime(received, sizeof received, "%Y-%m-%dT%H:%M:%SZ", &utc);
  std::cout << report.number << '\t' << received << '\t' << shown(report.subject) << '\n';
  if (report.name || report.email)
    std::cout << "  from: " << shown(report.name) << " <" << shown(report.email) << ">\n";
  if (report.fileName || report.attachment.data)
    std::cout << "  file: " << shown(report.fileName) << ", " << report.attachment.size << " bytes\n";
  std::cout << "  " << shown(report.message) << '\n';
}

} // namespace

void administer(Store& store, const Options& options) {
  if (!options.account.empty())
    store.putAccount(options.account, readPassword(options.account), options.premium);
  markCollaboration(store, options.startCollaboration, true);
  markCollaboration(store, options.endCollaboration, false);
  if (!options.updateVersion.empty())
    store.putUpdate({options.updateVersion, options.updateUrl});
  if (options.listMaps)
    store.describeMaps(printMap);
  if (options.listReports)
    store.listReports(printReport);
}

} // namespace localservice
