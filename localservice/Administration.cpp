#include "localservice/Administration.h"

#include "localservice/Identifier.h"
#include "terminal/Password.h"

#include <ctime>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace localservice {

namespace {

/// From the terminal without echo; where standard input is something else, its first line.
std::string readPassword(const std::string& account) {
  std::string password;
  const bool isRead = isatty(STDIN_FILENO) != 0 ? terminal::askPassword("Password for " + account + ": ", password)
                                                : static_cast<bool>(std::getline(std::cin, password));
  if (!isRead)
    throw std::runtime_error("no password could be read");
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
