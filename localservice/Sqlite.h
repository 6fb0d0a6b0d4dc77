// The SQLite C interface with owners: a connection, a statement, a transaction. Used by Store alone.
// A connection and what is made from it belong to one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>
#include <string>

namespace localservice {

/// The database could not be opened, read or written; `what()` is SQLite's text.
class StoreError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// A run of bytes that somebody else owns. Without `data` it is absent, which is not the same as empty.
struct Bytes {
  const void* data = nullptr;
  std::size_t size = 0;
};

struct ConnectionCloser {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
using Connection = std::unique_ptr<sqlite3, ConnectionCloser>;

/// Opens `file`, and makes it when it does not exist and may be written. Throws StoreError.
Connection openDatabase(const std::string& file, bool readOnly);

/// Runs SQL that returns no rows. Throws StoreError.
void execute(sqlite3* connection, const char* sql);

/// One prepared statement. Values are bound in their order in the SQL and must live until the last step().
class Statement {
public:
  Statement(sqlite3* database, const std::string& sql);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement); }

  Statement& bind(std::int64_t value);
  /// UTF-8; null binds NULL.
  Statement& bind(const char* text);
  Statement& bind(const std::string& text) { return bind(text.c_str()); }
  Statement& bind(Bytes bytes);

  /// True when a row stands ready, false at the end. Throws StoreError.
  bool step();

  // The next column of the row, from left to right. Texts and bytes stay valid until the next step().
  void read(std::int64_t& value);
  void read(bool& value);
  void read(const char*& text); ///< null for NULL
  void read(Bytes& bytes);

private:
  void check(int code) const;

  sqlite3* connection;
  sqlite3_stmt* statement = nullptr;
  int bound = 0;
  int column = 0;
};

/// All or nothing: what is done while it lives is undone unless commit() was reached.
class Transaction {
public:
  /// Takes the write lock at once, so that no later statement can fail for want of it. Throws StoreError.
  explicit Transaction(sqlite3* database) : connection(database) { execute(connection, "BEGIN IMMEDIATE"); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  /// Durable when it returns. Throws StoreError.
  void commit();

private:
  sqlite3* connection;
};

} // namespace localservice
