// Aligned columns for a person at a terminal.
//
//   path          bits  toggles  freq_mhz
//   tb/clk           1        4     50
//   tb/data[7:0]     8       12     18.75
//
// A column is as wide as its widest cell, so nothing can be written before the last row is known.
// Rows are kept packed until then.
#include <algorithm>
#include <cstring>
#include <deque>

#include "export/result_writer.h"
#include "text/number.h"
#include "text/printable.h"

namespace orsa::kesncd {

namespace {

// Names in dumps may have any length. One long name must neither widen every row to its own length
// nor fill a screen.
constexpr std::size_t kWidest = 60;
// Of a wide table: longer texts stand whole, but push the rest of their row aside.
constexpr std::size_t kWidestFill = 160;

/// The cells of many rows, texts and numbers one after the other: a tenth of what vectors of cells
/// take. Calling order: Add for each row, TakeAll once. Memory goes as cells are taken.
class PackedRows {
 public:
  void Add(const Row& row) {
    // A row may go beyond a block's size; blocks only keep memory from being moved as it grows.
    if (blocks_.empty() || blocks_.back().size() >= kBlock) blocks_.emplace_back();
    for (const Cell& cell : row) Pack(blocks_.back(), cell);
  }

  /// Calls `take` with each cell, in the order in which they came, and lets go of what was taken.
  template <class Take>
  void TakeAll(Take take) {
    for (; !blocks_.empty(); blocks_.pop_front()) {
      std::string_view rest = blocks_.front();
      while (!rest.empty()) take(Unpack(rest));
    }
  }

 private:
  // 256 KiB.
  static constexpr std::size_t kBlock = std::size_t{1} << 18U;

  // The bytes of a number as they are in memory: nobody else reads them.
  template <class Value>
  static void Append(std::string& to, Value value) {
    to.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  template <class Value>
  static Value Take(std::string_view& from) {
    Value value{};
    std::memcpy(&value, from.data(), sizeof value);
    from.remove_prefix(sizeof value);
    return value;
  }

  /// The number of the alternative in the variant, then what it holds. A text comes with its size.
  static void Pack(std::string& to, const Cell& cell) {
    to += static_cast<char>(cell.index());
    if (const auto* text = std::get_if<std::string>(&cell)) {
      Append(to, text->size());
      to += *text;
    } else if (const auto* count = std::get_if<std::int64_t>(&cell)) {
      Append(to, *count);
    } else if (const auto* value = std::get_if<double>(&cell)) {
      Append(to, *value);
    } else if (const auto* wide = std::get_if<WideCount>(&cell)) {
      Append(to, *wide);
    }
  }

  /// Takes the first cell off. The numbers are those of the alternatives of Cell.
  static Cell Unpack(std::string_view& from) {
    const auto kind = Take<char>(from);
    if (kind == 1) {
      const auto size = Take<std::size_t>(from);
      const std::string_view text = from.substr(0, size);
      from.remove_prefix(size);
      return std::string(text);
    }
    if (kind == 2) return Take<std::int64_t>(from);
    if (kind == 3) return Take<double>(from);
    if (kind == 4) return Take<WideCount>(from);
    return {};
  }

  std::deque<std::string> blocks_;
};

/// Measures as rows come and writes at the end.
class TableWriter : public ResultWriter {
 public:
  TableWriter(const ResultHead& head, const TableLook& look, ByteSink& out)
      : ResultWriter(out), look_(look), unknown_(head.unknown) {
    for (const Column& column : head.columns) {
      // A heading takes part in its column's width.
      widths_.push_back({column.name, column.isProse, column.name.size(), 0, 0, false});
    }
  }

  // `shown_` is kept, so that its texts' memory is used again.
  void Add(const Row& row) override {
    shown_ = row;
    for (std::size_t c = 0; c < shown_.size(); ++c) Measure(widths_[c], shown_[c]);
    rows_.Add(shown_);
  }

  // First the widths, then all cells.
  void End(const ResultTail& tail) override {
    for (Width& width : widths_) {
      // Numbers are aligned by their points, so they may need more than the widest of them.
      width.all = std::max(width.all, width.whole + width.fraction);
      width.all = std::min(width.all, look_.isWide || width.isProse ? kWidestFill : kWidest);
    }
    for (std::size_t c = 0; c < widths_.size(); ++c) Put(c, widths_[c].name, 0);
    std::size_t column = 0;
    rows_.TakeAll([&](const Cell& cell) {
      // Cells were put in row by row.
      PutCell(column, cell);
      column = (column + 1) % widths_.size();
    });
    // What a command says of the whole, such as "3 of 4 found".
    if (!tail.lastLine.empty()) text_ += PrintableLines(tail.lastLine) + "\n";
    PassOn(0);
  }

 private:
  /// What a column needs, in characters.
  struct Width {
    std::string name;
    bool isProse;
    std::size_t all;
    std::size_t whole;     // of the numbers, before the decimal point
    std::size_t fraction;  // and from there on
    bool hasNumbers;
  };

  /// The number as it is shown; empty for what is not known.
  std::string TextOf(const Cell& cell) const {
    if (const double* value = ValueIn(cell)) return RoundedText(*value, look_.digits);
    return NumberText(cell);
  }

  /// Characters from the decimal point on; 0 for a whole number.
  static std::size_t FractionOf(const std::string& number) {
    return number.size() - std::min(number.find('.'), number.size());
  }

  /// Takes the cell into account, and brings a text into the form that is shown.
  void Measure(Width& width, Cell& cell) const {
    // Control characters of a hostile name would steer the terminal.
    if (auto* text = std::get_if<std::string>(&cell)) {
      *text = Printable(*text);
      // The middle of a long name is left out.
      if (!look_.isWide && !width.isProse) *text = Shortened(*text, kWidest);
      width.all = std::max(width.all, CharacterCount(*text));
      return;
    }
    const std::string number = TextOf(cell);
    if (number.empty()) {
      width.all = std::max(width.all, unknown_.size());
      return;
    }
    const std::size_t fraction = FractionOf(number);
    width.whole = std::max(width.whole, number.size() - fraction);
    width.fraction = std::max(width.fraction, fraction);
    width.hasNumbers = true;
  }

  // Texts to the left, numbers by their points, what is not known where a number would end.
  void PutCell(std::size_t column, const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return Put(column, *text, 0);
    const std::string number = TextOf(cell);
    if (number.empty()) return Put(column, unknown_, 0);
    Put(column, number, widths_[column].fraction - FractionOf(number));
  }

  /// Fills a cell up to its column's width, with `after` blanks in the place of a shorter fraction.
  /// The last cell of a row has nothing after it.
  void Put(std::size_t column, const std::string& text, std::size_t after) {
    const Width& width = widths_[column];
    const std::size_t used = CharacterCount(text) + after;
    const std::size_t fill = width.all - std::min(width.all, used);
    const bool isLast = column + 1 == widths_.size();
    // A column with any number is aligned to the right.
    if (width.hasNumbers) text_.append(fill, ' ');
    text_ += text;
    if (isLast) {
      text_ += '\n';
      PassOn();
      return;
    }
    // Two blanks between columns.
    text_.append(after + (width.hasNumbers ? 0 : fill) + 2, ' ');
  }

  const TableLook look_;
  const std::string unknown_;
  std::vector<Width> widths_;
  PackedRows rows_;
  Row shown_;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeTableWriter(const ResultHead& head, const TableLook& look,
                                              ByteSink& out) {
  return std::make_unique<TableWriter>(head, look, out);
}

}  // namespace orsa::kesncd
