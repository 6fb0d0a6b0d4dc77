#include "localservice/Store.h"

#include "localservice/Identifier.h"
#include "localservice/PasswordHash.h"

#include <cstring>
#include <ctime>
#include <mutex>

namespace localservice {

namespace {

constexpr std::size_t longestReport = 8 << 20; // bytes
constexpr int mostReports = 100;

std::int64_t now() { return std::time(nullptr); }

/// Calls `visit` with column, member and, for a byte block, flag of each value that a save stores unchanged.
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

/// "id, created, version" and the saved columns; NULL for byte blocks that are not in `blocks`.
std::string mapColumns(unsigned blocks) {
  std::string columns = "id, created, version";
  MapRecord any;
  forSavedColumns(any, [&](const char* column, auto&, Blocks block) {
    columns += block & ~blocks ? std::string(", NULL") : std::string(", ") + column;
  });
  return columns;
}

/// Bytes of memory of all rows, with copies that a visitor makes: texts in four bytes for a character, blocks as they
/// are. SQLite does not read the pages of a block for its length.
std::string memoryExpression(unsigned blocks) {
  std::string sum = "coalesce(sum(1024";
  MapRecord any;
  forSavedColumns(any, [&](const std::string& column, auto&, Blocks block) {
    if (!(block & ~blocks))
      sum += (block ? " + 2" : " + 8") + (" * coalesce(length(" + column + "), 0)");
  });
  return sum + "), 0)";
}

std::uint64_t readSize(Query& query) {
  std::int64_t size = 0;
  query.step();
  query.read(size);
  return static_cast<std::uint64_t>(size);
}

constexpr const char* inList = " FROM maps WHERE owner = ? AND NOT removed AND published >= ?";

/// Reads the columns of mapColumns().
MapRecord readMap(Query& row) {
  MapRecord map;
  map.id = row.readRequiredText();
  row.read(map.created);
  row.read(map.version);
  forSavedColumns(map, [&](const char*, auto& member, Blocks) { row.read(member); });
  return map;
}

constexpr const char* accessColumns = "owner, removed, collaboration";

/// Reads the columns of accessColumns, and decides whether `owner` has access.
dsns__DesktopMapAccess readAccess(Query& row, const std::string& owner) {
  const char* const mapOwner = row.readRequiredText();
  bool removed = false;
  bool collaboration = false;
  row.read(removed);
  row.read(collaboration);
  if (owner != mapOwner)
    return dsns__DesktopMapAccess__NoAccess;
  if (removed)
    return dsns__DesktopMapAccess__MapRemoved;
  return collaboration ? dsns__DesktopMapAccess__OngoingCollaboration : dsns__DesktopMapAccess__Success;
}

/// The statement that inserts a map or overwrites the map with its identifier.
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

/// The turn of one of this process's threads to write. Only one of them then asks SQLite for the file's lock, for which
/// SQLite asks again and again, with pauses and without an order: whoever is unlucky would fail.
class WriteTurn {
public:
  WriteTurn() : lock(mutex, longestWait) {
    if (!lock)
      throw StoreError("database is locked");
  }

private:
  static inline std::timed_mutex mutex;
  std::unique_lock<std::timed_mutex> lock;
};

/// A transaction that takes the write lock at once: a later query cannot fail because another process has the lock.
class WriteTransaction : WriteTurn, public SQLite::Transaction {
public:
  explicit WriteTransaction(Connection& connection)
      : SQLite::Transaction(connection.database, SQLite::TransactionBehavior::IMMEDIATE) {}
};

} // namespace

void Store::followFile() {
  if (opened && hasMoved(opened->database))
    opened.reset();
}

void Store::putAccount(const std::string& name, const std::string& password, bool premium) {
  const std::string hash = hashPassword(password);
  Query query(connection(), "INSERT OR REPLACE INTO accounts(name, password, premium) VALUES(?, ?, ?)");
  query.bind(name).bind(hash).bind(premium).run();
}

bool Store::removeAccount(const std::string& name) {
  WriteTransaction transaction(connection());
  Query maps(connection(), "DELETE FROM maps WHERE owner = ?");
  maps.bind(name).run();
  Query account(connection(), "DELETE FROM accounts WHERE name = ?");
  const bool existed = account.bind(name).run() != 0;
  transaction.commit();
  return existed;
}

void Store::listAccounts(const std::function<void(const char*, bool)>& visit) {
  Query query(connection(), "SELECT name, premium FROM accounts ORDER BY name");
  while (query.step()) {
    const char* const name = query.readRequiredText();
    bool premium = false;
    query.read(premium);
    visit(name, premium);
  }
}

dsns__DesktopLoginEnumerators Store::login(const char* name, const char* password) {
  std::string hash = unmatchedHash();
  bool premium = false;
  {
    Query query(connection(), "SELECT password, premium FROM accounts WHERE name = ?");
    if (query.bind(name).step()) {
      hash = query.readRequiredText();
      query.read(premium);
    }
  } // ends the query: while it is open, no change can be committed, and a hash takes long
  if (!passwordMatches(name ? name : "", password ? password : "", hash))
    return dsns__DesktopLoginEnumerators__NotAUser;
  return premium ? dsns__DesktopLoginEnumerators__Success : dsns__DesktopLoginEnumerators__NotPremiumAccount;
}

void Store::listMaps(const std::string& owner, bool publishedOnly, unsigned blocks, const MapVisitor& visit) {
  Query query(connection(), "SELECT " + mapColumns(blocks) + inList + " ORDER BY rowid");
  query.bind(owner).bind(publishedOnly);
  while (query.step())
    visit(readMap(query));
}

dsns__DesktopMapAccess Store::loadMap(const std::string& owner, const std::string& id, unsigned blocks,
                                      const MapVisitor& visit) {
  Query query(connection(),
              std::string("SELECT ") + accessColumns + ", " + mapColumns(blocks) + " FROM maps WHERE id = ?");
  query.bind(id);
  if (!query.step())
    return dsns__DesktopMapAccess__None;
  const dsns__DesktopMapAccess access = readAccess(query, owner);
  if (access == dsns__DesktopMapAccess__Success)
    visit(readMap(query));
  return access;
}

std::uint64_t Store::memoryOfList(const std::string& owner, bool publishedOnly, unsigned blocks) {
  Query query(connection(), "SELECT " + memoryExpression(blocks) + inList);
  return readSize(query.bind(owner).bind(publishedOnly));
}

std::uint64_t Store::memoryOfMap(const std::string& id, unsigned blocks) {
  Query query(connection(), "SELECT " + memoryExpression(blocks) + " FROM maps WHERE id = ?");
  return readSize(query.bind(id));
}

dsns__DesktopMapAccess Store::saveMap(const std::string& owner, const MapRecord& map, bool forced, std::string& id) {
  WriteTransaction transaction(connection());
  id = canonicalIdentifier(map.id);
  dsns__DesktopMapAccess found = accessTo(owner, id);
  if (found == dsns__DesktopMapAccess__None) {
    id = findByName(owner, map.name);
    found = accessTo(owner, id);
  }
  if (found == dsns__DesktopMapAccess__None)
    id = freshIdentifier();
  else if (found != dsns__DesktopMapAccess__Success)
    return found;
  else if (!forced)
    return dsns__DesktopMapAccess__FileExists;

  Query query(connection(), saveStatement());
  query.bind(id).bind(owner).bind(now());
  forSavedColumns(map, [&](const char*, const auto& member, Blocks) { query.bind(member); });
  query.run();
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

dsns__DesktopMapAccess Store::renameMap(const std::string& owner, const std::string& id, const char* name) {
  WriteTransaction transaction(connection());
  const dsns__DesktopMapAccess found = accessTo(owner, id);
  if (found != dsns__DesktopMapAccess__Success)
    return found;
  if (!name || !*name)
    return dsns__DesktopMapAccess__None;
  const std::string namesake = findByName(owner, name);
  if (!namesake.empty() && namesake != id)
    return dsns__DesktopMapAccess__FileExists;

  Query query(connection(), "UPDATE maps SET name = ? WHERE id = ?");
  query.bind(name).bind(id).run();
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

dsns__DesktopMapAccess Store::removeMap(const std::string& owner, const std::string& id) {
  WriteTransaction transaction(connection());
  const dsns__DesktopMapAccess found = accessTo(owner, id);
  if (found != dsns__DesktopMapAccess__Success)
    return found;

  Query query(connection(), "UPDATE maps SET removed = 1, thumbnail = NULL, preview = NULL, backup = NULL,"
                            " content = NULL WHERE id = ?");
  query.bind(id).run();
  transaction.commit();
  return dsns__DesktopMapAccess__Success;
}

bool Store::markCollaboration(const std::string& id, bool ongoing) {
  Query query(connection(), "UPDATE maps SET collaboration = ? WHERE id = ?");
  return query.bind(ongoing).bind(id).run() != 0;
}

void Store::listAllMaps(const std::function<void(const char*, const char*, const MapRecord&)>& visit) {
  Query query(connection(), "SELECT owner, iif(removed, 'removed', iif(collaboration, 'collaboration', 'stored')), " +
                                mapColumns(NoBlocks) + " FROM maps ORDER BY rowid");
  while (query.step()) {
    const char* const owner = query.readRequiredText();
    const char* const state = query.readRequiredText();
    visit(owner, state, readMap(query));
  }
}

void Store::announceUpdate(const Update& update) {
  Query query(connection(), "INSERT OR REPLACE INTO updates(id, version, path) VALUES(1, ?, ?)");
  query.bind(update.version).bind(update.path).run();
}

Update Store::announcedUpdate() {
  Query query(connection(), "SELECT version, path FROM updates");
  if (!query.step())
    return {};
  const char* const version = query.readRequiredText();
  return {version, query.readRequiredText()};
}

void Store::addReport(const Report& report) {
  std::size_t size = report.attachment.size;
  for (const char* const text : {report.name, report.email, report.subject, report.message, report.fileName})
    size += text ? std::strlen(text) : 0;
  if (size > longestReport)
    throw StoreError("the report is too long");
  WriteTransaction transaction(connection());
  Query query(connection(), "INSERT INTO reports(received, name, email, subject, message, file_name, attachment)"
                            " VALUES(?, ?, ?, ?, ?, ?, ?)");
  query.bind(now()).bind(report.name).bind(report.email).bind(report.subject).bind(report.message);
  query.bind(report.fileName).bind(report.attachment).run();
  Query oldest(connection(), "DELETE FROM reports WHERE number <= (SELECT max(number) FROM reports) - ?");
  oldest.bind(std::int64_t{mostReports}).run();
  transaction.commit();
}

void Store::listReports(const std::function<void(const Report&)>& visit) {
  Query query(connection(), "SELECT number, received, name, email, subject, message, file_name, attachment"
                            " FROM reports ORDER BY number");
  while (query.step()) {
    Report report;
    query.read(report.number);
    query.read(report.received);
    for (const char** text : {&report.name, &report.email, &report.subject, &report.message, &report.fileName})
      query.read(*text);
    query.read(report.attachment);
    visit(report);
  }
}

dsns__DesktopMapAccess Store::accessTo(const std::string& owner, const std::string& id) {
  Query query(connection(), std::string("SELECT ") + accessColumns + " FROM maps WHERE id = ?");
  query.bind(id);
  return query.step() ? readAccess(query, owner) : dsns__DesktopMapAccess__None;
}

Connection& Store::connection() {
  if (!opened)
    opened.emplace(file.connect());
  return *opened;
}

std::string Store::findByName(const std::string& owner, const char* name) {
  Query query(connection(), "SELECT id FROM maps WHERE owner = ? AND name = ? AND NOT removed"
                            " ORDER BY rowid");
  query.bind(owner).bind(name);
  return query.step() ? query.readRequiredText() : "";
}

} // namespace localservice
