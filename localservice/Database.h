// Opens the SQLite file of the local service, and prepares statements whose values are bound and read in order. Used by
// Store alone. A database and its statements belong to one thread at a time.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace localservice {

/// The database could not be opened, read or written; `what()` is a text for people.
using StoreError = SQLite::Exception;

/// How long a request waits for others that save, at most; once for those of this process, once for other processes.
inline constexpr std::chrono::seconds longestWait{30};

/// How a file is opened.
enum class OpenMode {
  Read,   ///< the file has to exist and is not changed
  Change, ///< the file has to exist
  Create  ///< a missing or empty file becomes a new database
};

/// A connection, and its statements by their texts: preparing one again for each request would take longer than running
/// it.
struct Connection {
  SQLite::Database database;
  std::map<std::string, SQLite::Statement> statements;
};

/// The file of this process. Constant: any thread. ":memory:" is one database of this process, which exists while it is
/// open anywhere.
class DatabaseFile {
public:
  /// Only its owner can read and write a new file and its journal. Throws StoreError, also for a file of another
  /// program or of a newer version of this program; that file is not changed. Requires: the process has no connection
  /// to the file. This constructor opens and closes the file, and a process that closes any descriptor of a file loses
  /// all its POSIX locks on it, those of SQLite's connections too.
  DatabaseFile(std::string name, OpenMode openMode);

  /// Opens a connection. Throws StoreError.
  Connection connect() const;

private:
  const std::string file;
  const OpenMode mode;
};

/// Whether the file that `database` has opened is no longer the file of its name: deleted, renamed or replaced.
bool hasMoved(SQLite::Database& database);

/// Bytes that somebody else owns. When `data` is null they are absent, which differs from empty.
struct Bytes {
  const void* data = nullptr;
  std::size_t size = 0;
};

/// One use of a prepared statement; not two of the same text at a time. Bound texts and bytes must live as long as this
/// object. Every function throws StoreError.
class Query {
public:
  Query(Connection& connection, const std::string& sql)
      : statement(connection.statements.try_emplace(sql, connection.database, sql).first->second) {}
  /// Ends the statement's locks on the file.
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  Query& bind(std::int64_t value);
  Query& bind(bool value) { return bind(std::int64_t{value}); }
  /// UTF-8; null binds NULL.
  Query& bind(const char* text);
  Query& bind(const std::string& text) { return bind(text.c_str()); }
  Query& bind(Bytes bytes);

  /// True when a row is ready, false at the end.
  bool step();
  /// Runs a statement without rows. Returns how many rows it changed.
  int run() { return statement.exec(); }

  // Each reads the next column of the row. Texts and bytes stay valid until the next step(). NULL in a column in which
  // this program writes no NULL is a StoreError: another program has changed the file.
  void read(std::int64_t& value);
  void read(bool& value);
  void read(const char*& text); ///< null for NULL
  void read(Bytes& bytes);      ///< absent for NULL
  const char* readRequiredText();

private:
  SQLite::Column nextRequired();

  SQLite::Statement& statement;
  int bound = 0;
  int column = 0;
};

} // namespace localservice
