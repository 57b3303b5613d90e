// Aligned columns for a person at a terminal.
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
/// take.
class PackedRows {
 public:
  void Add(const Row& row) {
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
  static constexpr std::size_t kBlock = std::size_t{1} << 18U;

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

class TableWriter : public ResultWriter {
 public:
  TableWriter(const ResultHead& head, const TableLook& look, ByteSink& out)
      : ResultWriter(out), look_(look), unknown_(head.unknown) {
    for (const Column& column : head.columns) {
      widths_.push_back({column.name, column.isProse, column.name.size(), 0, 0, false});
    }
  }

  void Add(const Row& row) override {
    shown_ = row;
    for (std::size_t c = 0; c < shown_.size(); ++c) Measure(widths_[c], shown_[c]);
    rows_.Add(shown_);
  }

  void End(const ResultTail& tail) override {
    for (Width& width : widths_) {
      width.all = std::max(width.all, width.whole + width.fraction);
      width.all = std::min(width.all, look_.isWide || width.isProse ? kWidestFill : kWidest);
    }
    for (std::size_t c = 0; c < widths_.size(); ++c) Put(c, widths_[c].name, 0);
    std::size_t column = 0;
    rows_.TakeAll([&](const Cell& cell) {
      PutCell(column, cell);
      column = (column + 1) % widths_.size();
    });
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

  std::string TextOf(const Cell& cell) const {
    if (const double* value = ValueIn(cell)) return RoundedText(*value, look_.digits);
    return NumberText(cell);
  }

  static std::size_t FractionOf(const std::string& number) {
    return number.size() - std::min(number.find('.'), number.size());
  }

  /// Takes the cell into account, and brings a text into the form that is shown.
  void Measure(Width& width, Cell& cell) const {
    if (auto* text = std::get_if<std::string>(&cell)) {
      *text = Printable(*text);
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
    if (width.hasNumbers) text_.append(fill, ' ');
    text_ += text;
    if (isLast) {
      text_ += '\n';
      PassOn();
      return;
    }
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
