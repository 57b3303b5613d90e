// The cutting is libcsv's; this feeds it line by line, so that errors can name theirs.
#include "host/standalone/csv_rows.h"

#include <csv.h>

#include <exception>
#include <fstream>
#include <new>
#include <utility>

namespace orsa::kesncd::standalone {

namespace {

/// Give it each line, then Finish. Rows come into the caller's list as their ends are met; a quoted
/// cell may reach over several lines.
class CsvParser {
 public:
  explicit CsvParser(Rows& rows) : rows_(rows) {
    // Strict: a quote inside an unquoted cell, and a file that ends inside a quoted one, are
    // errors.
    if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI) != 0) throw std::bad_alloc();
  }
  ~CsvParser() { csv_free(&parser_); }
  CsvParser(const CsvParser&) = delete;
  CsvParser& operator=(const CsvParser&) = delete;

  /// Takes a line with its newline; false when it breaks the format.
  bool TakeLine(const std::string& line) {
    const std::size_t taken =
        csv_parse(&parser_, line.data(), line.size(), TakeCell, TakeRowEnd, this);
    return Passed(taken == line.size());
  }

  /// Takes the end of the file; false inside a quoted cell.
  bool Finish() { return Passed(csv_fini(&parser_, TakeCell, TakeRowEnd, this) == 0); }

  std::string Error() { return csv_strerror(csv_error(&parser_)); }

 private:
  /// Nothing may be thrown through libcsv, so a callback keeps what it catches for later.
  template <class Action>
  void Guard(Action action) noexcept {
    try {
      action();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  // Throws what a callback kept, and what libcsv says about memory; else returns what it was given.
  bool Passed(bool good) {
    if (failure_) std::rethrow_exception(failure_);
    if (!good && csv_error(&parser_) == CSV_ENOMEM) throw std::bad_alloc();
    return good;
  }

  // A cell's text is libcsv's, so it is copied.
  static void TakeCell(void* text, std::size_t length, void* self) {
    auto* parser = static_cast<CsvParser*>(self);
    parser->Guard([&] { parser->row_.emplace_back(static_cast<const char*>(text), length); });
  }

  // The list of cells is empty again for the next row.
  static void TakeRowEnd(int /*terminator*/, void* self) {
    auto* parser = static_cast<CsvParser*>(self);
    parser->Guard([&] { parser->rows_.push_back(std::exchange(parser->row_, {})); });
  }

  csv_parser parser_{};
  Rows& rows_;
  // The cells of the row so far.
  std::vector<std::string> row_;
  // What a callback has caught.
  std::exception_ptr failure_;
};

/// The start of a message about a line, from 1.
std::string At(const std::string& path, std::size_t line) {
  return path + ":" + std::to_string(line) + ": ";
}

}  // namespace

bool ReadCsvRows(const std::string& path, std::size_t fewest, std::size_t most, Rows& rows,
                 std::string& message) {
  std::ifstream file(path, std::ios::binary);
  CsvParser parser(rows);
  std::size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::size_t before = rows.size();
    // std::getline drops the newline; the last line gets one even where the file has none.
    if (!parser.TakeLine(line + '\n')) {
      message = At(path, number) + parser.Error();
      return false;
    }
    if (rows.size() == before) continue;  // blank, or in the middle of a quoted cell
    const std::size_t cells = rows.back().size();
    if (cells < fewest || cells > most) {
      message = At(path, number) + std::to_string(cells) + " columns instead of " +
                std::to_string(fewest) + " to " + std::to_string(most);
      return false;
    }
  }
  if (!file.eof()) {  // never opened, or a folder
    message = path + ": cannot be read";
    return false;
  }
  if (!parser.Finish()) {
    message = At(path, number) + "a quoted cell is not closed";
    return false;
  }
  return true;
}

}  // namespace orsa::kesncd::standalone
