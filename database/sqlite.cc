// Opening databases, and what to make of SQLite's codes.
#include "database/sqlite.h"

#include <sqlite3.h>

#include <filesystem>
#include <limits>
#include <new>

namespace orsa::kesncd {

namespace {

/// The path as the part of a URI that names a file. Letters, digits and the four marks stand as
/// they are, all else as %XX: a name may hold a "?" or "%", which have a meaning in a URI.
std::string UriOf(const std::string& path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  // A relative path in a URI would be ambiguous.
  const std::string absolute = std::filesystem::absolute(path).string();
  std::string uri = "file://";
  for (const char c : absolute) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '/' || c == '.' || c == '_' || c == '-';
    if (isPlain) {
      uri += c;
    } else {
      uri += '%';
      uri += kDigits[byte >> 4U];
      uri += kDigits[byte & 0xFU];
    }
  }
  return uri;
}

}  // namespace

void StatementEnd::operator()(sqlite3_stmt* statement) const {
  (void)sqlite3_finalize(statement);
}

/// v2: a statement that is still there keeps it alive.
void Connection::Close::operator()(sqlite3* handle) const {
  (void)sqlite3_close_v2(handle);
}

/// Even a connection that could not be opened has a handle, with the reason in it.
void Connection::Open(const std::string& path, int flags, const char* vfs) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &handle, flags, vfs);
  // Before the test, so that it is closed.
  handle_.reset(handle);
  if (code != SQLITE_OK) Fail(code);
}

/// "memdb" is SQLite's own system of files in memory.
Connection Connection::InMemory(const std::string& name) {
  Connection connection(name, FailureKind::OutputFailed);
  connection.Open("new", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, "memdb");
  // Its default limit is 1 GiB.
  sqlite3_int64 most = std::numeric_limits<sqlite3_int64>::max() / 4;
  (void)sqlite3_file_control(connection.handle_.get(), "main", SQLITE_FCNTL_SIZE_LIMIT, &most);
  return connection;
}

/// Immutable: the file is not locked, and a journal beside it is not looked for.
Connection Connection::ReadOnly(const std::string& path, const std::string& name) {
  Connection connection(name, FailureKind::Unusable);
  connection.Open(UriOf(path) + "?mode=ro&immutable=1",
                  SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
  sqlite3* const handle = connection.handle_.get();
  // What a schema made by a stranger could do is switched off: no writing to its own tables, no
  // functions with effects, no triggers and views, no further files.
  (void)sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  (void)sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  (void)sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  (void)sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  (void)sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
  (void)sqlite3_limit(handle, SQLITE_LIMIT_WORKER_THREADS, 0);
  // Limits on what one statement may ask for; the program's own need far less.
  (void)sqlite3_limit(handle, SQLITE_LIMIT_VDBE_OP, 10000);
  (void)sqlite3_limit(handle, SQLITE_LIMIT_EXPR_DEPTH, 100);
  // Each page's cells are checked as they are read.
  connection.Run("PRAGMA cell_size_check=ON");
  return connection;
}

/// For statements whose text is the program's own: nothing of a user's is ever put into one.
void Connection::Run(const char* sql) {
  const int code = sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Fail(code);
}

/// -1: the text ends at its NUL.
Statement Connection::Prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v2(handle_.get(), sql, -1, &statement, nullptr);
  if (code != SQLITE_OK) Fail(code);
  return Statement(statement);
}

/// A corrupt page may show at any row, so every step may throw.
bool Connection::Step(sqlite3_stmt* statement) const {
  const int code = sqlite3_step(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) Fail(code);
  return code == SQLITE_ROW;
}

/// NOCOPY: a view of what memdb holds, not a second copy of it.
std::string_view Connection::Bytes() {
  sqlite3_int64 size = 0;
  const unsigned char* const bytes =
      sqlite3_serialize(handle_.get(), "main", &size, SQLITE_SERIALIZE_NOCOPY);
  if (bytes == nullptr) throw std::bad_alloc();
  return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size)};
}

/// Memory is nobody's fault; it is told apart first.
void Connection::Fail(int code) const {
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  // The handle's own text says more than the code's.
  const std::string reason = handle_ ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code);
  if (kind_ == FailureKind::OutputFailed) {
    throw Failure(kind_, name_ + ": cannot make the database: " + reason);
  }
  // The lower byte is the code, the others its details.
  const int kind = code & 0xFF;
  // The file itself cannot be read; in all other cases its content is wrong.
  if (kind == SQLITE_CANTOPEN || kind == SQLITE_IOERR || kind == SQLITE_PERM) {
    throw Failure(kind_, name_ + ": " + reason);
  }
  throw Failure(kind_, name_ + ": is no database of activity, or a corrupt one: " + reason);
}

void Connection::FailCorrupt() const {
  throw Failure(kind_, name_ + ": is a corrupt database: it does not hold what was written");
}

}  // namespace orsa::kesncd
