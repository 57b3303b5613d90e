// Gathered rows as a virtual table: SQLite calls functions that it is given for every value.
#include "database/gathered_rows.h"

#include <sqlite3.h>

#include <memory>
#include <new>
#include <utility>

#include "text/printable.h"

namespace orsa::kesncd {

namespace {

/// Whether SQLite's functions for texts, and those of other languages, can have it as one. The
/// usual case, without looking at characters one by one.
bool IsText(std::string_view text) {
  bool isPlain = true;
  for (const char c : text) isPlain = isPlain && c > 0;
  // A NUL would end the text for many who read it.
  if (isPlain) return true;
  while (!text.empty()) {
    const Utf8Character next = FirstCharacter(text);
    if (!next.isValid || next.code == 0) return false;
    text.remove_prefix(next.bytes);
  }
  return true;
}

/// "CREATE TABLE x(c0,c1)". The name is not used; columns need no type.
std::string TableOf(std::size_t columns) {
  std::string sql = "CREATE TABLE x(c0";
  for (std::size_t i = 1; i < columns; ++i) sql += ",c" + std::to_string(i);
  return sql + ")";
}

}  // namespace

/// What SQLite calls, in this order for each statement: Open, Filter, then IsAtEnd, Column for each
/// value and Next for each row, Close. Connect comes before the first one. No exception may reach
/// SQLite.
struct GatheredRows::Module {
  struct Table : sqlite3_vtab {
    const GatheredRows* rows;
  };
  struct Cursor : sqlite3_vtab_cursor {
    std::size_t cell;  // the row's first one
  };

  static const GatheredRows& RowsOf(const sqlite3_vtab_cursor* cursor) {
    return *static_cast<const Table*>(cursor->pVtab)->rows;
  }
  static std::size_t& CellOf(sqlite3_vtab_cursor* cursor) {
    return static_cast<Cursor*>(cursor)->cell;
  }

  static int Connect(sqlite3* handle, void* rows, int /*words*/, const char* const* /*word*/,
                     sqlite3_vtab** table, char** /*message*/) try {
    auto made = std::make_unique<Table>();
    made->rows = static_cast<const GatheredRows*>(rows);
    const int code = sqlite3_declare_vtab(handle, TableOf(made->rows->columns_).c_str());
    if (code == SQLITE_OK) *table = made.release();
    return code;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
  static int Disconnect(sqlite3_vtab* table) {
    delete static_cast<Table*>(table);
    return SQLITE_OK;
  }
  /// There is one way to read the rows: from the first to the last.
  static int BestIndex(sqlite3_vtab* /*table*/, sqlite3_index_info* /*plan*/) { return SQLITE_OK; }
  static int Open(sqlite3_vtab* /*table*/, sqlite3_vtab_cursor** cursor) try {
    *cursor = new Cursor{};
    return SQLITE_OK;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
  static int Close(sqlite3_vtab_cursor* cursor) {
    delete static_cast<Cursor*>(cursor);
    return SQLITE_OK;
  }
  static int Filter(sqlite3_vtab_cursor* cursor, int /*plan*/, const char* /*planText*/,
                    int /*values*/, sqlite3_value** /*value*/) {
    CellOf(cursor) = 0;
    return SQLITE_OK;
  }
  static int Next(sqlite3_vtab_cursor* cursor) {
    CellOf(cursor) += RowsOf(cursor).columns_;
    return SQLITE_OK;
  }
  static int IsAtEnd(sqlite3_vtab_cursor* cursor) {
    return CellOf(cursor) < RowsOf(cursor).cells_.size() ? 0 : 1;
  }
  /// Texts are not copied: they stay until the statement has ended.
  static int Column(sqlite3_vtab_cursor* cursor, sqlite3_context* to, int column) {
    const GatheredRows& rows = RowsOf(cursor);
    const Cell& cell = rows.cells_[CellOf(cursor) + static_cast<std::size_t>(column)];
    const auto text = [&] { return rows.texts_.data() + cell.number; };
    switch (cell.kind) {
      case Kind::Null:
        break;  // what a value is until it is set
      case Kind::Integer:
        sqlite3_result_int64(to, cell.number);
        break;
      case Kind::Text:
        sqlite3_result_text64(to, text(), cell.size, SQLITE_STATIC, SQLITE_UTF8);
        break;
      case Kind::Blob:
        sqlite3_result_blob64(to, text(), cell.size, SQLITE_STATIC);
        break;
    }
    return SQLITE_OK;
  }
  /// Nobody asks for row numbers, but SQLite wants to be able to.
  static int RowNumber(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
    *number = static_cast<sqlite3_int64>(CellOf(cursor));
    return SQLITE_OK;
  }

  /// Without xCreate: the table is there as soon as the module is.
  static constexpr sqlite3_module Make() {
    sqlite3_module module{};
    module.xConnect = Connect;
    module.xBestIndex = BestIndex;
    module.xDisconnect = Disconnect;
    module.xOpen = Open;
    module.xClose = Close;
    module.xFilter = Filter;
    module.xNext = Next;
    module.xEof = IsAtEnd;
    module.xColumn = Column;
    module.xRowid = RowNumber;
    return module;
  }
};

GatheredRows::GatheredRows(Connection& of, std::string table, std::size_t columns)
    : of_(of), table_(std::move(table)), columns_(columns) {
  static constexpr sqlite3_module kModule = Module::Make();
  const int code = sqlite3_create_module(of_.handle(), table_.c_str(), &kModule, this);
  if (code != SQLITE_OK) of_.Fail(code);
}

/// A module without functions takes the one of that name away.
GatheredRows::~GatheredRows() {
  (void)sqlite3_create_module(of_.handle(), table_.c_str(), nullptr, nullptr);
}

void GatheredRows::AddText(std::string_view text) {
  cells_.push_back({IsText(text) ? Kind::Text : Kind::Blob,
                    static_cast<std::int64_t>(texts_.size()), text.size()});
  texts_ += text;
}

void GatheredRows::Clear() {
  cells_.clear();
  texts_.clear();
}

}  // namespace orsa::kesncd
