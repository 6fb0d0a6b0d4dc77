// The SQLite file that everything is kept in: opening it safely, and statements whose values are bound and read in
// their order. Used by Store alone. A database and what is made from it belong to one thread at a time.
#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <cstddef>
#include <cstdint>
#include <string>

namespace localservice {

/// The database could not be opened, read or written; `what()` is a text for people.
using StoreError = SQLite::Exception;

/// How a file is opened.
enum class Access {
  Read,   ///< the file exists and stays as it is
  Change, ///< the file exists
  Create  ///< an absent or empty file becomes a new database
};

/// Opens `file`; ":memory:" is one database of this process that lives as long as somebody has it open. A new file can
/// be read and written by its owner alone, and so can its journal. Throws StoreError, also for a file of another
/// program or of a newer version of this one, which then stays as it is.
SQLite::Database openDatabase(const std::string& file, Access access);

/// A run of bytes that somebody else owns. Without `data` it is absent, which is not the same as empty.
struct Bytes {
  const void* data = nullptr;
  std::size_t size = 0;
};

/// One prepared statement. Bound texts and bytes must live until the last step(). Every function throws StoreError.
class Query {
public:
  Query(SQLite::Database& database, const std::string& sql) : statement(database, sql) {}

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

  // The next column of the row, from left to right. Texts and bytes stay valid until the next step(). A NULL where this
  // program writes none is an error: somebody else has changed the file.
  void read(std::int64_t& value);
  void read(bool& value);
  void read(const char*& text); ///< null for NULL
  void read(Bytes& bytes);      ///< absent for NULL
  const char* readRequiredText();

private:
  SQLite::Column nextRequired();

  SQLite::Statement statement;
  int bound = 0;
  int column = 0;
};

} // namespace localservice
