#include "localservice/Options.h"

#include "localservice/Description.h"

#include <algorithm>
#include <stdexcept>

namespace localservice {

namespace {

const char* const purpose =
    R"(Tarnwell's map service on one machine, for development and tests. Keeps accounts, maps, update information and
reports in one SQLite file. Prints its endpoint when it is ready; stops on SIGINT and SIGTERM. Uses plain HTTP: do not
store other people's secrets here. Changes and lists come first; with any of them, but without --listen and --port, the
program then ends.

How maps behave: a save means the map with its identifier or, if that is not known, the user's map of the same name. If
there is such a map, the response is "FileExists", and a save with force replaces the map. Requests for deleted maps get
"MapRemoved", for maps of other accounts "NoAccess", for unknown maps "None". Lists contain all maps of the user; lists
of published maps contain only these.)";

QList<QCommandLineOption> allOptions() {
  return {
      {"db", "The database file; it is made when needed. With \":memory:\" all data is lost when the program ends.",
       "FILE"},
      {"listen", "The address to listen at. Default: 127.0.0.1:0. Port 0 means a free port.", "HOST:PORT"},
      {"port", "The port, in place of the one in --listen.", "N", "0"},
      {"read-only", "Do not change the file: every change gets \"DbError\"."},
      {"max-request", "Refuse longer requests with status 413; from 1 to 1024. Default: 256.", "MiB", "256"},
      {"max-memory",
       "Memory for large requests and responses, all together: those that find none free wait, and are refused with "
       "status 503 after five minutes. Default: 512.",
       "MiB", "512"},
      {"log", "Write one line per request to standard error: time, client, operation, user, outcome, milliseconds, "
              "bytes received and sent."},
      {"trace",
       "Write a readable file for each request and its response to this folder: passwords masked, byte blocks cut. "
       "Keeps "
       "the newest 1000.",
       "FOLDER"},
      {"delay", "Wait this many milliseconds, at most 600000, before each operation.", "MS", "0"},
      {"fail",
       "Do not carry out this operation: respond with this result, a text of DesktopMapAccess or "
       "DesktopLoginEnumerators, or with a SOAP fault, or close the connection (drop). Names as in --describe tables. "
       "Can be given several times.",
       "OPERATION=RESULT|fault|drop"},
      {"add-account",
       "Add or change an account. Reads its password from the terminal, without echo, or from standard input.", "NAME"},
      {"premium", "The account is a premium account. This is the default."},
      {"not-premium", "It is not one: its requests get \"NotPremiumAccount\"."},
      {"remove-account", "Remove an account and its maps.", "NAME"},
      {"start-collaboration",
       "Mark the map with this identifier: others are working on it. Requests to read or change it get "
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

/// The least and the greatest value of each option that takes a number.
constexpr struct {
  const char* name;
  int least;
  int most;
} numbers[] = {{"port", 0, 65535}, {"max-request", 1, 1024}, {"max-memory", 1, 1 << 20}, {"delay", 0, 600000}};

void checkNumber(const QString& name, const QString& text, int least, int most) {
  bool isNumber = false;
  const int value = text.toInt(&isNumber);
  if (!isNumber || value < least || value > most)
    refuse(QString("--%1 takes a number from %2 to %3").arg(name).arg(least).arg(most));
}

/// Sets host and port to those of `text`: "HOST:PORT", an IPv6 address in brackets.
void setAddress(Options& options, const QString& text) {
  const auto colon = text.lastIndexOf(':');
  if (colon < 1)
    refuse("--listen takes HOST:PORT");
  QString host = text.left(colon);
  if (host.startsWith('[') && host.endsWith(']'))
    host = host.mid(1, host.size() - 2);
  options.host = host.toStdString();
  checkNumber("listen", text.mid(colon + 1), 0, 65535);
  options.port = text.mid(colon + 1).toInt();
}

/// Every value is used: an option that is given twice would lose one.
void checkValues(const QCommandLineParser& parser) {
  for (const QCommandLineOption& option : allOptions()) {
    const QString name = option.names().constLast();
    if (option.valueName().isEmpty()) // asked for its values, Qt would print a warning
      continue;
    if (parser.values(option).contains(QString()))
      refuse(QString("--%1 needs a value").arg(name));
    if (name != "fail" && parser.values(option).size() > std::max<qsizetype>(1, option.defaultValues().size()))
      refuse(QString("--%1 can be given once").arg(name));
  }
}

} // namespace

Options::Options(const QStringList& arguments) {
  parser.setApplicationDescription(purpose);
  parser.addOptions(allOptions());
  if (!parser.parse(arguments))
    refuse(parser.errorText());
  if (!parser.positionalArguments().isEmpty())
    refuse("unexpected argument " + parser.positionalArguments().constFirst());
  checkValues(parser);
  const QString form = parser.value("describe");
  if (isSet("describe") && form != "wsdl" && form != "tables")
    refuse("--describe takes wsdl or tables");
  if (isSet("help") || isSet("version") || isSet("describe"))
    return;
  if (!isSet("db"))
    refuse("--db is missing");
  if (isSet("update-version") != isSet("update-url"))
    refuse("--update-version and --update-url go together");
  if ((isSet("premium") || isSet("not-premium")) && !isSet("add-account"))
    refuse("--premium and --not-premium go with --add-account");
  if (isSet("premium") && isSet("not-premium"))
    refuse("--premium and --not-premium exclude each other");
  for (const auto& [name, least, most] : numbers)
    checkNumber(name, parser.value(name), least, most);
  if (isSet("listen"))
    setAddress(*this, parser.value("listen"));
  if (isSet("port"))
    port = number("port");
  for (const QString& rule : parser.values("fail"))
    faultInjection.add(rule.toStdString());
}

std::string Options::information() const {
  if (isSet("help"))
    return parser.helpText().toStdString();
  if (isSet("version"))
    return "tarnwell-localservice " TARNWELL_VERSION "\n";
  if (isSet("describe"))
    return text("describe") == "wsdl" ? serviceDescription() : protocolTables();
  return {};
}

} // namespace localservice
