// A connection to SQLite and its statements, with errors as this program has them. Everything that
// calls SQLite goes through here.
#ifndef KESNCD_DATABASE_SQLITE_H_
#define KESNCD_DATABASE_SQLITE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "text/failure.h"

struct sqlite3;
struct sqlite3_stmt;

namespace orsa::kesncd {

/// A statement that was compiled. The connection has to outlive it.
struct StatementEnd {
  void operator()(sqlite3_stmt* statement) const;
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementEnd>;

class Connection {
 public:
  /// A new database in memory. `name` is what messages call it, here and below.
  static Connection InMemory(const std::string& name);
  /// A file that is only read and does not change meanwhile. What its schema says is not trusted.
  static Connection ReadOnly(const std::string& path, const std::string& name);

  void Run(const char* sql);
  Statement Prepare(const char* sql);
  /// Takes the next row of a statement; false where there is none left.
  bool Step(sqlite3_stmt* statement) const;
  /// The bytes of a database in memory, which are there until it changes or goes.
  std::string_view Bytes();

  [[noreturn]] void Fail(int code) const;
  /// That what the file holds is not what was written.
  [[noreturn]] void FailCorrupt() const;

 private:
  struct Close {
    void operator()(sqlite3* handle) const;
  };

  Connection(std::string name, FailureKind kind) : name_(std::move(name)), kind_(kind) {}
  void Open(const std::string& path, int flags, const char* vfs);

  std::string name_;
  FailureKind kind_;
  std::unique_ptr<sqlite3, Close> handle_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_SQLITE_H_
