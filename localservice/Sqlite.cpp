#include "localservice/Sqlite.h"

namespace localservice {

namespace {
constexpr int busyMilliseconds = 10000; // what a request waits for others that save
} // namespace

Connection openDatabase(const std::string& file, bool readOnly) {
  const int access = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, access | SQLITE_OPEN_NOMUTEX, nullptr);
  Connection connection(opened); // also a failed opening leaves something to close
  if (code != SQLITE_OK)
    throw StoreError(file + ": " + (opened ? sqlite3_errmsg(opened) : sqlite3_errstr(code)));
  sqlite3_busy_timeout(opened, busyMilliseconds);
  // A rollback journal instead of a log beside the file: between saves everything is in the one file.
  execute(opened, "PRAGMA synchronous=FULL");
  return connection;
}

void execute(sqlite3* connection, const char* sql) {
  if (sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    throw StoreError(sqlite3_errmsg(connection));
}

Statement::Statement(sqlite3* database, const std::string& sql) : connection(database) {
  check(sqlite3_prepare_v2(connection, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr));
}

Statement& Statement::bind(std::int64_t value) {
  check(sqlite3_bind_int64(statement, ++bound, value));
  return *this;
}

Statement& Statement::bind(const char* text) {
  check(sqlite3_bind_text(statement, ++bound, text, -1, SQLITE_STATIC));
  return *this;
}

Statement& Statement::bind(Bytes bytes) {
  check(sqlite3_bind_blob64(statement, ++bound, bytes.data, bytes.size, SQLITE_STATIC));
  return *this;
}

bool Statement::step() {
  column = 0;
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE)
    throw StoreError(sqlite3_errmsg(connection));
  return code == SQLITE_ROW;
}

void Statement::read(std::int64_t& value) { value = sqlite3_column_int64(statement, column++); }

void Statement::read(bool& value) { value = sqlite3_column_int(statement, column++) != 0; }

void Statement::read(const char*& text) {
  text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column++));
}

void Statement::read(Bytes& bytes) {
  const bool absent = sqlite3_column_type(statement, column) == SQLITE_NULL;
  const void* data = sqlite3_column_blob(statement, column); // null also for an empty one
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  ++column;
  if (!absent && size != 0 && !data)
    throw StoreError("out of memory");
  bytes = absent ? Bytes{} : Bytes{size != 0 ? data : "", size};
}

void Statement::check(int code) const {
  if (code != SQLITE_OK)
    throw StoreError(sqlite3_errmsg(connection));
}

Transaction::~Transaction() {
  if (connection)
    sqlite3_exec(connection, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
  execute(connection, "COMMIT");
  connection = nullptr;
}

} // namespace localservice
