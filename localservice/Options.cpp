#include "localservice/Options.h"

#include "localservice/Description.h"

#include <QtCore/QCommandLineParser>
#include <stdexcept>

namespace localservice {

namespace {

const char* const purpose =
    R"(Tarnwell's map service on one machine, for development and tests. Keeps accounts, maps, update information and
reports in one SQLite file. Prints its endpoint when it is ready; stops on SIGINT and SIGTERM. Uses plain HTTP: do not
store other people's secrets here. Changes and lists come first; with any of them, but without --listen and --port, the
program then ends.

How maps behave: a save means the map with its identifier or, if that is not known, the user's map of the same name. If
there is such a map, the answer is "FileExists", and a save with force replaces the map. Requests for deleted maps are
answered with "MapRemoved", for maps of other accounts with "NoAccess", for unknown maps with "None". Lists contain all
maps of the user; lists of published maps contain only these.)";

QList<QCommandLineOption> allOptions() {
  return {
      {"db", "The database file; it is made when needed. With \":memory:\" all data is lost when the program ends.",
       "FILE"},
      {"listen", "The address to listen at. Default: 127.0.0.1:0. Port 0 means a free port.", "HOST:PORT"},
      {"port", "The port, in place of the one in --listen.", "N"},
      {"read-only", "Do not change the file: every change is answered with \"DbError\"."},
      {"max-request", "Refuse longer requests with status 413; from 1 to 1024. Default: 256.", "MiB", "256"},
      {"log", "Write one line per request to standard error: time, client, operation, user, outcome, milliseconds, "
              "bytes received and sent."},
      {"delay", "Wait this many milliseconds, at most 600000, before each operation.", "MS", "0"},
      {"fail",
       "Do not carry out this operation: answer with this result, a text of DesktopMapAccess or "
       "DesktopLoginEnumerators, or with a SOAP fault, or close the connection (drop). Names as in --describe tables. "
       "Can be given several times.",
       "OPERATION=RESULT|fault|drop"},
      {"add-account",
       "Add or change an account. Reads its password from the terminal, without echo, or from standard input.", "NAME"},
      {"premium", "The account is a premium account. This is the default."},
      {"not-premium", "It is not one: its requests are answered with \"NotPremiumAccount\"."},
      {"remove-account", "Remove an account and its maps.", "NAME"},
      {"start-collaboration",
       "Mark the map with this identifier: others are working on it. Requests to read or change it are answered with "
       "\"OngoingCollaboration\".",
       "MAP"},
      {"end-collaboration", "Remove this mark.", "MAP"},
      {"update-version", "Announce a newer setup to clients with an older version; needs --update-url.", "VERSION"},
      {"update-url", "The address of that setup.", "URL"},
      {"list-accounts", "Show every account, and whether it is a premium account."},
      {"list-maps", "Show identifier, owner, state, version and name of every map, also of removed ones."},
      {"list-reports", "Show every crash report and message that was received."},
      {"describe", "Print the protocol: as WSDL, which GET with \"?wsdl\" also returns, or as tables.", "wsdl|tables"},
      {{"h", "help"}, "Show this help."},
      {{"v", "version"}, "Show the version."},
  };
}

[[noreturn]] void refuse(const QString& reason) { throw std::invalid_argument(reason.toStdString()); }

int readNumber(const QCommandLineParser& parser, const QString& name, int least, int most) {
  bool isNumber = false;
  const int value = parser.value(name).toInt(&isNumber);
  if (!isNumber || value < least || value > most)
    refuse(QString("--%1 takes a number from %2 to %3").arg(name).arg(least).arg(most));
  return value;
}

int readPort(const QString& text) {
  bool isNumber = false;
  const int port = text.toInt(&isNumber);
  if (!isNumber || port < 0 || port > 65535)
    refuse("ports are numbers from 0 to 65535");
  return port;
}

/// `text`: "HOST:PORT", an IPv6 address in brackets.
void setAddress(Options& options, const QString& text) {
  const int colon = text.lastIndexOf(':');
  if (colon < 1)
    refuse("--listen takes HOST:PORT");
  QString host = text.left(colon);
  if (host.startsWith('[') && host.endsWith(']'))
    host = host.mid(1, host.size() - 2);
  options.host = host.toStdString();
  options.port = readPort(text.mid(colon + 1));
}

/// Help, version or description, if asked for.
std::string informationFor(QCommandLineParser& parser) {
  if (parser.isSet("help"))
    return parser.helpText().toStdString();
  if (parser.isSet("version"))
    return "tarnwell-localservice " TARNWELL_VERSION "\n";
  const QString form = parser.value("describe");
  if (parser.isSet("describe") && form != "wsdl" && form != "tables")
    refuse("--describe takes wsdl or tables");
  if (form == "wsdl")
    return serviceDescription();
  return form == "tables" ? protocolTables() : "";
}

void refuseEmptyValues(const QCommandLineParser& parser) {
  for (const QCommandLineOption& option : allOptions())
    if (!option.valueName().isEmpty() && parser.values(option).contains(QString()))
      refuse(QString("--%1 needs a value").arg(option.names().constLast()));
}

} // namespace

Options parseOptions(const QStringList& arguments) {
  QCommandLineParser parser;
  parser.setApplicationDescription(purpose);
  parser.addOptions(allOptions());
  if (!parser.parse(arguments))
    refuse(parser.errorText());
  if (!parser.positionalArguments().isEmpty())
    refuse("unexpected argument " + parser.positionalArguments().constFirst());
  refuseEmptyValues(parser);
  const auto text = [&parser](const char* name) { return parser.value(name).toStdString(); };

  Options options;
  options.information = informationFor(parser);
  if (!options.information.empty())
    return options;
  options.database = text("db");
  if (options.database.empty())
    refuse("--db is missing");
  options.readOnly = parser.isSet("read-only");
  options.addedAccount = text("add-account");
  options.isPremium = !parser.isSet("not-premium");
  options.removedAccount = text("remove-account");
  options.startedCollaboration = text("start-collaboration");
  options.endedCollaboration = text("end-collaboration");
  options.updateVersion = text("update-version");
  options.updateUrl = text("update-url");
  if (options.updateVersion.empty() != options.updateUrl.empty())
    refuse("--update-version and --update-url go together");
  options.listAccounts = parser.isSet("list-accounts");
  options.listMaps = parser.isSet("list-maps");
  options.listReports = parser.isSet("list-reports");

  if (parser.isSet("listen"))
    setAddress(options, parser.value("listen"));
  if (parser.isSet("port"))
    options.port = readPort(parser.value("port"));
  options.longestRequest = static_cast<std::uint64_t>(readNumber(parser, "max-request", 1, 1024)) << 20;
  options.log = parser.isSet("log");
  options.delay = readNumber(parser, "delay", 0, 600000);
  for (const QString& rule : parser.values("fail"))
    options.faultInjection.add(rule.toStdString());
  const bool hasOther = !options.addedAccount.empty() || !options.removedAccount.empty() ||
                        !options.startedCollaboration.empty() || !options.endedCollaboration.empty() ||
                        !options.updateVersion.empty() || options.listAccounts || options.listMaps ||
                        options.listReports;
  options.serve = parser.isSet("listen") || parser.isSet("port") || !hasOther;
  return options;
}

} // namespace localservice
