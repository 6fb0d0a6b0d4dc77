#include "localservice/Store.h"

#include "localservice/Identifier.h"
#include "localservice/Password.h"

#include <ctime>

namespace localservice {

namespace {

// The long columns come last: a row is read from its start, so a list never touches the pages of content.
constexpr const char* schema = R"(
  CREATE TABLE accounts(name TEXT PRIMARY KEY, password TEXT NOT NULL, premium INTEGER NOT NULL);
  CREATE TABLE maps(
    id TEXT PRIMARY KEY, owner TEXT NOT NULL, removed INTEGER NOT NULL DEFAULT 0,
    collaboration INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL, version INTEGER NOT NULL,
    last_modified INTEGER NOT NULL, published INTEGER NOT NULL, allow_inclusion INTEGER NOT NULL,
    is_twlx INTEGER NOT NULL, name TEXT, author TEXT, description TEXT, format_type TEXT, format_version TEXT,
    format_header TEXT, thumbnail BLOB, preview BLOB, backup BLOB, content BLOB);
  CREATE INDEX maps_of_owner ON maps(owner);
  CREATE TABLE updates(id INTEGER PRIMARY KEY CHECK(id = 1), version TEXT NOT NULL, path TEXT NOT NULL);
  CREATE TABLE reports(
    number INTEGER PRIMARY KEY, received INTEGER NOT NULL, name TEXT, email TEXT, subject TEXT, message TEXT,
    file_name TEXT, attachment BLOB);
  PRAGMA user_version = 1;
)";
constexpr std::int64_t schemaVersion = 1;

std::int64_t versionOf(sqlite3* connection) {
  Statement statement(connection, "PRAGMA user_version");
  std::int64_t version = 0;
  if (statement.step())
    statement.read(version);
  return version;
}

void prepareTables(sqlite3* connection, bool readOnly) {
  if (versionOf(connection) == 0 && !readOnly) {
    Transaction transaction(connection);
    if (versionOf(connection) == 0) // nobody was faster
      execute(connection, schema);
    transaction.commit();
  }
  if (versionOf(connection) != schemaVersion)
    throw StoreError("the file is not a store of this program's version");
}

std::int64_t now() { return std::time(nullptr); }

/// Calls `visit` with column and member of everything that a save stores as given; byte blocks with their flag.
template <class Record, class Visit> void forSavedColumns(Record& map, Visit visit) {
  visit("name", map.name, NoBlocks);
  visit("author", map.author, NoBlocks);
  visit("description", map.description, NoBlocks);
  visit("format_type", map.formatType, NoBlocks);
  visit("format_version", map.formatVersion, NoBlocks);
  visit("format_header", map.formatHeader, NoBlocks);
  visit("last_modified", map.lastModified, NoBlocks);
  visit("published", map.isPublished, NoBlocks);
  visit("allow_inclusion", map.allowInclusion, NoBlocks);
  visit("is_twlx", map.isTwlx, NoBlocks);
  visit("thumbnail", map.thumbnail, Thumbnail);
  visit("preview", map.preview, Preview);
  visit("backup", map.backup, Backup);
  visit("content", map.content, Content);
}

/// "id, created, version" and the saved columns, those of byte blocks that are not wanted as NULL.
std::string mapColumns(unsigned blocks) {
  std::string columns = "id, created, version";
  MapRecord any;
  forSavedColumns(any, [&](const char* column, auto&, Blocks block) {
    columns += block & ~blocks ? std::string(", NULL") : std::string(", ") + column;
  });
  return columns;
}

/// Reads what mapColumns() selected.
MapRecord readMap(Statement& row) {
  MapRecord map;
  row.read(map.id);
  row.read(map.created);
  row.read(map.version);
  forSavedColumns(map, [&](const char*, auto& member, Blocks) { row.read(member); });
  return map;
}

constexpr const char* accessColumns = "owner, removed, collaboration";

/// Reads what accessColumns selected, and judges it.
dsns__DesktopMapAccess readAccess(Statement& row, const std::string& owner) {
  const char* mapOwner = nullptr;
  bool removed = false;
  bool collaboration = false;
  row.read(mapOwner);
  row.read(removed);
  row.read(collaboration);
  if (owner != mapOwner)
    return dsns__DesktopMapAccess__NoAccess;
  if (removed)
    return dsns__DesktopMapAccess__MapRemoved;
  return collaboration ? dsns__DesktopMapAccess__OngoingCollaboration : dsns__DesktopMapAccess__Success;
}

/// Inserts a map, or saves over the one with its identifier.
std::string saveStatement() {
  std::string names;
  std::string values;
  std::string updates;
  MapRecord any;
  forSavedColumns(any, [&](const std::string& column, auto&, Blocks) {
    names += ", " + column;
    values += ", ?";
    updates += ", " + column + " = coalesce(excluded." + column + ", " + column + ")";
  });
  return "INSERT INTO maps(id, owner, created, version" + names + ") VALUES(?, ?, ?, 1" + values +
         ") ON CONFLICT(id) DO UPDATE SET version = version + 1" + updates;
}

} // namespace

Store::Store(const std::string& file, bool readOnly) : connection(openDatabase(file, readOnly)) {
  prepareTables(connection.get(), readOnly);
}

void Store::putAccount(const std::string& name, const std::string& password, bool premium) {
  const std::string hash = hashPassword(password);
  Statement statement(connection.get(), "INSERT OR REPLACE INTO accounts(name, password, premium) VALUES(?, ?, ?)");
  run(statement.bind(name).bind(hash).bind(premium));
}

dsns__DesktopLoginEnumerators Store::login(const char* name, const char* password) {
  Statement statement(connection.get(), "SELECT password, premium FROM accounts WHERE name = ?");
  statement.bind(name);
  if (!statement.step() || !password)
    return dsns__DesktopLoginEnumerators__NotAUser;
  const char* hash = nullptr;
  bool premium = false;
  statement.read(hash);
  statement.read(premium);
  if (!passwordMatches(password, hash))
    return dsns__DesktopLoginEnumerators__NotAUser;
  return premium ? dsns__DesktopLoginEnumerators__Success : dsns__DesktopLoginEnumerators__NotPremiumAccount;
}

void Store::listMaps(const std::string& owner, bool publishedOnly, unsigned blocks, const MapVisitor& visit) {
  Statement statement(connection.get(), "SELECT " + mapColumns(blocks) +
                                            " FROM maps WHERE owner = ? AND NOT removed AND published >= ?"
                                            " ORDER BY rowid");
  statement.bind(owner).bind(publishedOnly);
  while (statement.step())
    visit(readMap(statement));
}

dsns__DesktopMapAccess Store::loadMap(const std::string& owner, const std::string& id, unsigned blocks,
                                      const MapVisitor& visit) {
  Statement statement(connection.get(),
                      std::string("SELECT ") + accessColumns + ", " + mapColumns(blocks) + " FROM maps WHERE id = ?");
  statement.bind(id);
  if (!statement.step())
    return dsns__DesktopMapAccess__None;
  const dsns__DesktopMapAccess access = readAccess(statement, owner);
  if (access == dsns__DesktopMapAccess__Success)
    visit(readMap(statement));
  return access;
}

dsns__DesktopMapAccess Store::saveMap(const std::string& owner, const MapRecord& map, bool forced, std::string& id) {
  Transaction transaction(connection.get());
  id = canonicalIdentifier(map.id);
  dsns__DesktopMapAccess found = access(owner, id);
  if (found == dsns__DesktopMapAccess__None) {
    id = findByName(owner, map.name);
    found = access(owner, id);
  }
  if (found == dsns__DesktopMapAccess__None)
    id = freshIdentifier();
  else if (found != dsns__DesktopMapAccess__Success)
    return found;
  else if (!forced)
    return dsns__DesktopMapAccess__FileExists;

  Statement statement(connection.get(), saveStatement());
  statement.bind(id).bind(owner).bind(now());
  forSavedColumns(map, [&](const char*, const auto& member, Blocks) { statement.bind(member); });
  run(statement);
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

dsns__DesktopMapAccess Store::renameMap(const std::string& owner, const std::string& id, const char* name) {
  Transaction transaction(connection.get());
  const dsns__DesktopMapAccess found = access(owner, id);
  if (found != dsns__DesktopMapAccess__Success)
    return found;
  if (!name || !*name)
    return dsns__DesktopMapAccess__None;
  const std::string namesake = findByName(owner, name);
  if (!namesake.empty() && namesake != id)
    return dsns__DesktopMapAccess__FileExists;

  Statement statement(connection.get(), "UPDATE maps SET name = ? WHERE id = ?");
  run(statement.bind(name).bind(id));
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

dsns__DesktopMapAccess Store::removeMap(const std::string& owner, const std::string& id) {
  Transaction transaction(connection.get());
  const dsns__DesktopMapAccess found = access(owner, id);
  if (found != dsns__DesktopMapAccess__Success)
    return found;

  Statement statement(connection.get(), "UPDATE maps SET removed = 1, thumbnail = NULL, preview = NULL, backup = NULL,"
                                        " content = NULL WHERE id = ?");
  run(statement.bind(id));
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

bool Store::markCollaboration(const std::string& id, bool ongoing) {
  Statement statement(connection.get(), "UPDATE maps SET collaboration = ? WHERE id = ?");
  run(statement.bind(ongoing).bind(id));
  return sqlite3_changes(connection.get()) != 0;
}

void Store::describeMaps(const std::function<void(const char*, const char*, const MapRecord&)>& visit) {
  Statement statement(connection.get(),
                      "SELECT owner, iif(removed, 'removed', iif(collaboration, 'collaboration', 'stored')), " +
                          mapColumns(NoBlocks) + " FROM maps ORDER BY rowid");
  while (statement.step()) {
    const char* owner = nullptr;
    const char* state = nullptr;
    statement.read(owner);
    statement.read(state);
    visit(owner, state, readMap(statement));
  }
}

void Store::putUpdate(const Update& update) {
  Statement statement(connection.get(), "INSERT OR REPLACE INTO updates(id, version, path) VALUES(1, ?, ?)");
  run(statement.bind(update.version).bind(update.path));
}

Update Store::update() {
  Statement statement(connection.get(), "SELECT version, path FROM updates");
  if (!statement.step())
    return {};
  const char* version = nullptr;
  const char* path = nullptr;
  statement.read(version);
  statement.read(path);
  return {version, path};
}

void Store::addReport(const Report& report) {
  Statement statement(connection.get(), "INSERT INTO reports(received, name, email, subject, message, file_name,"
                                        " attachment) VALUES(?, ?, ?, ?, ?, ?, ?)");
  statement.bind(now()).bind(report.name).bind(report.email).bind(report.subject).bind(report.message);
  run(statement.bind(report.fileName).bind(report.attachment));
}

void Store::listReports(const std::function<void(const Report&)>& visit) {
  Statement statement(connection.get(), "SELECT number, received, name, email, subject, message, file_name, attachment"
                                        " FROM reports ORDER BY number");
  while (statement.step()) {
    Report report;
    statement.read(report.number);
    statement.read(report.received);
    for (const char** text : {&report.name, &report.email, &report.subject, &report.message, &report.fileName})
      statement.read(*text);
    statement.read(report.attachment);
    visit(report);
  }
}

dsns__DesktopMapAccess Store::access(const std::string& owner, const std::string& id) {
  Statement statement(connection.get(), std::string("SELECT ") + accessColumns + " FROM maps WHERE id = ?");
  statement.bind(id);
  return statement.step() ? readAccess(statement, owner) : dsns__DesktopMapAccess__None;
}

std::string Store::findByName(const std::string& owner, const char* name) {
  Statement statement(connection.get(), "SELECT id FROM maps WHERE owner = ? AND name = ? AND NOT removed"
                                        " ORDER BY rowid");
  statement.bind(owner).bind(name);
  const char* id = nullptr;
  if (statement.step())
    statement.read(id);
  return id ? id : "";
}

void Store::run(Statement& statement) {
  while (statement.step()) {
  }
}

} // namespace localservice
