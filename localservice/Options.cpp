#include "localservice/Options.h"

#include <stdexcept>
#include <string_view>

namespace localservice {

const char* const helpText =
    R"(Usage: tarnwell-localservice --db FILE [--listen HOST:PORT | --port N] [--read-only]
       tarnwell-localservice --db FILE CHANGE-OR-LIST...
       tarnwell-localservice --describe wsdl|tables

Tarnwell's map service on one machine, for development and tests: accounts, maps, update information and reports live
in one SQLite file, which is made when it does not exist and survives a kill at any moment. Prints its endpoint when
it is ready; stops on SIGINT and SIGTERM. It speaks plain HTTP and is no place for other people's secrets.

Service:
  --db FILE                  the file that everything is kept in
  --listen HOST:PORT         where to listen (default 127.0.0.1:0); port 0 takes a free one
  --port N                   the port alone
  --read-only                write nothing: every change is answered with "DbError"

Changes, done before anything is served; without --listen and --port the program ends after them:
  --add-account NAME         add an account, or change it; the password is read from standard input
  --premium, --not-premium   its standing (default: premium; others get "NotPremiumAccount")
  --start-collaboration MAP  mark the map with this identifier as worked on by others: reading and changing it is
                             answered with "OngoingCollaboration"
  --end-collaboration MAP    take the mark away
  --update-version VERSION   announce a new set-up to clients with an older version; needs --update-url
  --update-url URL           where that set-up is found

Lists:
  --list-maps                identifier, owner, state, version and name of every map, also removed ones
  --list-reports             every crash report and message that was received

Protocol:
  --describe wsdl            print the service's description; the service gives it to GET with "?wsdl"
  --describe tables          print its operations and types as tables, in Markdown

How maps behave: without force, a save is answered with "FileExists" when its identifier is known, or when it has none
and the user has a map of that name; with force it replaces that map. Deleted maps are remembered and answered with
"MapRemoved", those of other accounts with "NoAccess", unknown ones with "None". Lists of published maps leave out the
others; all other lists hold every map of the user.
)";

namespace {

/// "HOST:PORT", an IPv6 address in brackets.
void setAddress(Options& options, const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0)
    throw std::invalid_argument("--listen takes HOST:PORT");
  options.host = text.substr(0, colon);
  options.port = text.substr(colon + 1);
  if (options.host.front() == '[' && options.host.back() == ']')
    options.host = options.host.substr(1, options.host.size() - 2);
  options.serve = true;
}

struct Rule {
  std::string_view name;
  bool takesValue;
  void (*apply)(Options& options, const std::string& value);
};

constexpr Rule rules[] = {
    {"--db", true, [](Options& o, const std::string& value) { o.database = value; }},
    {"--listen", true, setAddress},
    {"--port", true, [](Options& o, const std::string& value) { o.port = value, o.serve = true; }},
    {"--read-only", false, [](Options& o, const std::string&) { o.readOnly = true; }},
    {"--add-account", true, [](Options& o, const std::string& value) { o.account = value; }},
    {"--premium", false, [](Options& o, const std::string&) { o.premium = true; }},
    {"--not-premium", false, [](Options& o, const std::string&) { o.premium = false; }},
    {"--start-collaboration", true, [](Options& o, const std::string& value) { o.startCollaboration = value; }},
    {"--end-collaboration", true, [](Options& o, const std::string& value) { o.endCollaboration = value; }},
    {"--update-version", true, [](Options& o, const std::string& value) { o.updateVersion = value; }},
    {"--update-url", true, [](Options& o, const std::string& value) { o.updateUrl = value; }},
    {"--list-maps", false, [](Options& o, const std::string&) { o.listMaps = true; }},
    {"--list-reports", false, [](Options& o, const std::string&) { o.listReports = true; }},
    {"--describe", true, [](Options& o, const std::string& value) { o.describe = value; }},
    {"--help", false, [](Options& o, const std::string&) { o.help = true; }},
};

const Rule& ruleOf(const std::string& name) {
  for (const Rule& rule : rules)
    if (rule.name == name)
      return rule;
  throw std::invalid_argument("unknown option " + name);
}

} // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const Rule& rule = ruleOf(name);
    if (!rule.takesValue && equals != std::string::npos)
      throw std::invalid_argument(name + " takes no value");
    std::string value;
    if (rule.takesValue) {
      if (equals == std::string::npos && ++i == argc)
        throw std::invalid_argument(name + " needs a value");
      value = equals == std::string::npos ? argv[i] : argument.substr(equals + 1);
      if (value.empty())
        throw std::invalid_argument(name + " needs a value");
    }
    rule.apply(options, value);
  }
  if (!options.describe.empty() && options.describe != "wsdl" && options.describe != "tables")
    throw std::invalid_argument("--describe takes wsdl or tables");
  if (options.help || !options.describe.empty())
    return options;
  if (options.database.empty())
    throw std::invalid_argument("--db is missing");
  if (options.updateVersion.empty() != options.updateUrl.empty())
    throw std::invalid_argument("--update-version and --update-url go together");
  const bool other = !options.account.empty() || !options.startCollaboration.empty() ||
                     !options.endCollaboration.empty() || !options.updateVersion.empty() || options.listMaps ||
                     options.listReports;
  options.serve = options.serve || !other;
  return options;
}

} // namespace localservice
