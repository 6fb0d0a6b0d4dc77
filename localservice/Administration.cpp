#include "localservice/Administration.h"

#include "localservice/Identifier.h"
#include "terminal/Password.h"
#include "terminal/Printable.h"

#include <QtCore/QDateTime>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace localservice {

namespace {

/// Asks on the terminal, without echo. When standard input is no terminal, reads its first line.
std::string readPassword(const std::string& account) {
  std::string password;
  const bool isRead = isatty(STDIN_FILENO) != 0 ? terminal::askPassword("Password for " + account + ": ", password)
                                                : static_cast<bool>(std::getline(std::cin, password));
  if (!isRead)
    throw std::runtime_error("no password could be read");
  if (password.empty())
    throw std::runtime_error("an account needs a password");
  return password;
}

void markCollaboration(Store& store, const std::string& map, bool ongoing) {
  if (!map.empty() && !store.markCollaboration(canonicalIdentifier(map.c_str()), ongoing))
    throw std::runtime_error("there is no map with the identifier " + map);
}

/// `text`, safe for a terminal; empty for null.
std::string shown(const char* text) { return terminal::printable(QString::fromUtf8(text)).toStdString(); }

void printAccount(const char* name, bool premium) {
  std::cout << shown(name) << '\t' << (premium ? "premium" : "not premium") << '\n';
}

void printMap(const char* owner, const char* state, const MapRecord& map) {
  std::cout << shown(map.id) << '\t' << shown(owner) << '\t' << state << '\t' << map.version << '\t' << shown(map.name)
            << '\n';
}

void printReport(const Report& report) {
  const QString received = QDateTime::fromSecsSinceEpoch(report.received, Qt::UTC).toString(Qt::ISODate);
  std::cout << report.number << '\t' << received.toStdString() << '\t' << shown(report.subject) << '\n';
  if (report.name || report.email)
    std::cout << "  from: " << shown(report.name) << " <" << shown(report.email) << ">\n";
  if (report.fileName || report.attachment.data)
    std::cout << "  file: " << shown(report.fileName) << ", " << report.attachment.size << " bytes\n";
  std::cout << "  " << shown(report.message) << '\n';
}

} // namespace

void administer(Store& store, const Options& options) {
  if (!options.addedAccount.empty())
    store.putAccount(options.addedAccount, readPassword(options.addedAccount), options.isPremium);
  if (!options.removedAccount.empty() && !store.removeAccount(options.removedAccount))
    throw std::runtime_error("there is no account " + options.removedAccount);
  markCollaboration(store, options.startedCollaboration, true);
  markCollaboration(store, options.endedCollaboration, false);
  if (!options.updateVersion.empty())
    store.announceUpdate({options.updateVersion, options.updateUrl});
  if (options.listAccounts)
    store.listAccounts(printAccount);
  if (options.listMaps)
    store.listAllMaps(printMap);
  if (options.listReports)
    store.listReports(printReport);
}

} // namespace localservice
