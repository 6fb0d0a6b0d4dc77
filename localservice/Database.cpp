#include "localservice/Database.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace localservice {

namespace {

const char* const inMemory = ":memory:";
constexpr std::chrono::milliseconds pause{10};

// The long columns come last: SQLite reads a row from its start, so that a list reads no page of content.
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
  PRAGMA application_id = 0x54574c53;
  PRAGMA user_version = 1;
)";
constexpr unsigned long applicationId = 0x54574c53;
constexpr unsigned long schemaVersion = 1;

/// SQLite's callback for a file that another connection has locked. SQLite's own pauses become as long as 100 ms, so
/// that of two processes that save all the time, one can wait for very long.
int waitForOthers(void*, int attempts) {
  if (attempts * pause >= longestWait)
    return 0;
  std::this_thread::sleep_for(pause);
  return 1;
}

/// Creates `file` with permissions for its owner alone: SQLite would let everybody read it. SQLite gives a journal the
/// permissions of its file.
void createPrivately(const std::string& file) {
  const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor >= 0)
    close(descriptor);
}

/// Checks a file by its header before SQLite opens it, because opening can change a file that has a write-ahead log.
void refuseForeignFile(const std::string& file) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0)
    throw StoreError(file + ": " + std::strerror(errno));
  if (status.st_size == 0)
    return;
  const SQLite::Header header = SQLite::Database::getHeaderInfo(file);
  if (header.applicationId == applicationId && header.userVersion > schemaVersion)
    throw StoreError(file + ": made by a newer version of this program");
  // The first files of this program have no identifier and no write-ahead log.
  const bool isOurs =
      header.applicationId == applicationId || (header.applicationId == 0 && header.fileFormatReadVersion == 1);
  if (!isOurs || header.userVersion != schemaVersion)
    throw StoreError(file + ": the file of another program");
}

std::int64_t countTables(Connection& connection, const char* condition) {
  Query tables(connection, std::string("SELECT count(*) FROM sqlite_master WHERE ") + condition);
  std::int64_t count = 0;
  tables.step();
  tables.read(count);
  return count;
}

void createTables(Connection& connection) {
  SQLite::Transaction transaction(connection.database, SQLite::TransactionBehavior::IMMEDIATE);
  if (countTables(connection, "true") == 0) // another process may have created them in the meantime
    connection.database.exec(schema);
  transaction.commit();
}

} // namespace

DatabaseFile::DatabaseFile(std::string name, OpenMode openMode) : file(std::move(name)), mode(openMode) {
  if (file == inMemory)
    return;
  if (mode == OpenMode::Create)
    createPrivately(file);
  refuseForeignFile(file);
}

Connection DatabaseFile::connect() const {
  const int flags = mode == OpenMode::Read ? SQLite::OPEN_READONLY : SQLite::OPEN_READWRITE;
  Connection connection{file == inMemory
                            ? SQLite::Database("file:/tarnwell?vfs=memdb",
                                               SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_URI)
                            : SQLite::Database(file, flags),
                        {}};
  sqlite3_busy_handler(connection.database.getHandle(), waitForOthers, nullptr);
  // With a rollback journal, all data is in the one file between two saves. Removing the journal commits; with EXTRA,
  // the removal is on the disk when a save returns.
  connection.database.exec("PRAGMA synchronous = EXTRA");
  if (mode == OpenMode::Create && countTables(connection, "true") == 0)
    createTables(connection);
  if (countTables(connection, "name IN ('accounts', 'maps', 'updates', 'reports')") != 4)
    throw StoreError(file + ": not a file of this program");
  return connection;
}

bool hasMoved(SQLite::Database& database) {
  int moved = 0;
  return sqlite3_file_control(database.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

Query::~Query() {
  statement.tryReset(); // repeats the error of the last step(), which is known
  statement.clearBindings();
}

Query& Query::bind(std::int64_t value) {
  statement.bind(++bound, value);
  return *this;
}

Query& Query::bind(const char* text) {
  ++bound;
  if (text)
    statement.bindNoCopy(bound, text);
  else
    statement.bind(bound);
  return *this;
}

Query& Query::bind(Bytes bytes) {
  ++bound;
  if (bytes.data)
    statement.bindNoCopy(bound, bytes.data, static_cast<int>(bytes.size));
  else
    statement.bind(bound);
  return *this;
}

bool Query::step() {
  column = 0;
  return statement.executeStep();
}

SQLite::Column Query::nextRequired() {
  SQLite::Column value = statement.getColumn(column++);
  if (value.isNull())
    throw StoreError("a value is missing: the file was changed by another program");
  return value;
}

void Query::read(std::int64_t& value) { value = nextRequired().getInt64(); }

void Query::read(bool& value) { value = nextRequired().getInt64() != 0; }

void Query::read(const char*& text) {
  const SQLite::Column value = statement.getColumn(column++);
  text = value.isNull() ? nullptr : value.getText();
}

void Query::read(Bytes& bytes) {
  const SQLite::Column value = statement.getColumn(column++);
  if (value.isNull()) {
    bytes = {};
    return;
  }
  const void* const data = value.getBlob(); // null for an empty one too
  const auto size = static_cast<std::size_t>(value.getBytes());
  if (size != 0 && !data)
    throw StoreError("out of memory");
  bytes = {size != 0 ? data : "", size};
}

const char* Query::readRequiredText() { return nextRequired().getText(); }

} // namespace localservice
