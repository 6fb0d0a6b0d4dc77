#include "localservice/Administration.h"

#include "localservice/Identifier.h"
#include "terminal/Password.h"
#include "terminal/Printable.h"

#include <QtCore/QDateTime>
#include <algorithm>
#include <iostream>
#include <iterator>
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
  if (password.back() == '\r')
    throw std::runtime_error("the password ends with a carriage return, which nobody types: end the line without it");
  return password;
}

void addAccount(Store& store, const Options& options) {
  const std::string name = options.text("add-account");
  store.putAccount(name, readPassword(name), !options.isSet("not-premium"));
}

void removeAccount(Store& store, const Options& options) {
  if (!store.removeAccount(options.text("remove-account")))
    throw std::runtime_error("there is no account " + options.text("remove-account"));
}

void markCollaboration(Store& store, const std::string& map, bool ongoing) {
  if (!store.markCollaboration(canonicalIdentifier(map.c_str()), ongoing))
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
  const QString received = QDateTime::fromSecsSinceEpoch(report.received).toUTC().toString(Qt::ISODate);
  std::cout << report.number << '\t' << received.toStdString() << '\t' << shown(report.subject) << '\n';
  if (report.name || report.email)
    std::cout << "  from: " << shown(report.name) << " <" << shown(report.email) << ">\n";
  if (report.fileName || report.attachment.data)
    std::cout << "  file: " << shown(report.fileName) << ", " << report.attachment.size << " bytes\n";
  std::cout << "  " << shown(report.message) << '\n';
}

/// What each option asks for, in the order in which it is done.
constexpr struct {
  const char* option;
  bool makesDatabase;
  void (*run)(Store& store, const Options& options);
} commands[] = {
    {"add-account", true, addAccount},
    {"remove-account", false, removeAccount},
    {"start-collaboration", false,
     [](Store& store, const Options& options) { markCollaboration(store, options.text("start-collaboration"), true); }},
    {"end-collaboration", false,
     [](Store& store, const Options& options) { markCollaboration(store, options.text("end-collaboration"), false); }},
    {"update-version", true,
     [](Store& store, const Options& options) {
       store.announceUpdate({options.text("update-version"), options.text("update-url")});
     }},
    {"list-accounts", false, [](Store& store, const Options&) { store.listAccounts(printAccount); }},
    {"list-maps", false, [](Store& store, const Options&) { store.listAllMaps(printMap); }},
    {"list-reports", false, [](Store& store, const Options&) { store.listReports(printReport); }},
};

} // namespace

bool asksForAdministration(const Options& options) {
  return std::any_of(std::begin(commands), std::end(commands),
                     [&](const auto& command) { return options.isSet(command.option); });
}

bool createsDatabase(const Options& options) {
  return std::any_of(std::begin(commands), std::end(commands),
                     [&](const auto& command) { return command.makesDatabase && options.isSet(command.option); });
}

void administer(Store& store, const Options& options) {
  for (const auto& command : commands)
    if (options.isSet(command.option))
      command.run(store, options);
}

} // namespace localservice
