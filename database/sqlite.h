// A connection to SQLite and its statements, with errors as this program has them. Everything that
// calls SQLite goes through here.
//
// SQLite's codes become Failures: OutputFailed for a database that is made, Unusable for one that
// is read; memory that runs out is std::bad_alloc, as everywhere.
#ifndef KESNCD_DATABASE_SQLITE_H_
#define KESNCD_DATABASE_SQLITE_H_

#include <memory>
#include <string>
#include <string_view>

#include "text/failure.h"

struct sqlite3;
struct sqlite3_stmt;

namespace orsa::kesncd {

struct StatementEnd {
  void operator()(sqlite3_stmt* statement) const;
};
/// A compiled statement, which ends with the pointer.
using Statement = std::unique_ptr<sqlite3_stmt, StatementEnd>;

/// Calling order: InMemory or ReadOnly; then Run, Prepare and Step as often as wanted. Movable. One
/// thread only.
class Connection {
 public:
  /// A new database in memory. `name` is what messages call it, here and below. No file is made:
  /// what is written goes out by Bytes.
  static Connection InMemory(const std::string& name);
  /// A file that is only read and does not change meanwhile. What its schema says is not trusted.
  /// Views, triggers and functions in it are switched off; nothing beside the file is read, such as
  /// a journal.
  static Connection ReadOnly(const std::string& path, const std::string& name);

  /// One or several statements without results.
  void Run(const char* sql);
  /// One statement, with "?" where values are bound.
  Statement Prepare(const char* sql);
  /// Takes the next row of a statement; false where there is none left. Also executes a statement
  /// without rows, for which it returns false.
  bool Step(sqlite3_stmt* statement) const;
  /// For calls that only one place needs. Stays the connection's.
  sqlite3* handle() const { return handle_.get(); }
  /// The bytes of a database in memory, which are there until it changes or goes.
  std::string_view Bytes();

  /// Throws the Failure that SQLite's code stands for.
  [[noreturn]] void Fail(int code) const;
  /// Throws the Failure of a file that does not hold what was written.
  [[noreturn]] void FailCorrupt() const;

 private:
  /// The handle is closed when the last statement is gone.
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  Connection(std::string name, FailureKind kind) : name_(std::move(name)), kind_(kind) {}
  void Open(const std::string& path, int flags, const char* vfs);

  std::string name_;  // for messages
  FailureKind kind_;  // of failures of this connection
  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_SQLITE_H_
