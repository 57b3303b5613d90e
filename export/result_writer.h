// A result on its way to a format: facts about the run, the rows of one table, and what is known
// only after the last row. Rows pass through, so that a dump of any size gives a result of any
// size.
#ifndef KESNCD_EXPORT_RESULT_WRITER_H_
#define KESNCD_EXPORT_RESULT_WRITER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "activity/activity_rows.h"
#include "text/byte_stream.h"

namespace orsa::kesncd {

/// A cell: nothing known, which is what a Cell() is, a text, a count, a measured value, or a count
/// that may be a sum of very many. A value that is no finite number is written as if nothing were
/// known.
using Cell = std::variant<std::monostate, std::string, std::int64_t, double, WideCount>;
/// A cell for each column of the head, in its order.
using Row = std::vector<Cell>;
/// Keys with values, written in this order.
using Facts = std::vector<std::pair<std::string, Cell>>;
/// Keys with lists of texts.
using Lists = std::vector<std::pair<std::string, std::vector<std::string>>>;

/// A column's name with its unit, such as "freq_mhz". Names are part of the interface: scripts find
/// columns by them.
struct Column {
  Column(const char* text) : name(text) {}  // NOLINT(google-explicit-constructor): reads as a list
  Column(std::string text, bool prose) : name(std::move(text)), isProse(prose) {}

  std::string name;
  bool isProse = false;  // sentences of the program's own, which no table cuts
};

/// What is known before the first row. JSON alone has the facts and the lists. It has to live as
/// long as the writer that is made with it.
struct ResultHead {
  Facts facts;
  std::string rowsName;  // the JSON key of the rows
  std::vector<Column> columns;
  std::string unknown = "-";  // stands for a cell of which nothing is known, in a table
  Lists lists{};
};

/// What is known after the last row. A table alone has the last line. CSV has nothing of it.
struct ResultTail {
  Facts facts{};
  Lists lists{};
  std::string lastLine{};
};

/// Made with a head, then gets the rows, then the tail. What it is made with must outlive it. A
/// writer begins to write when it is made, and passes on what it has by blocks. Not thread-safe.
/// What the sink throws passes through; the result is then incomplete and must not be committed.
class ResultWriter {
 public:
  virtual ~ResultWriter() = default;
  ResultWriter(const ResultWriter&) = delete;
  ResultWriter& operator=(const ResultWriter&) = delete;

  /// A row with a cell for each column. The row is not kept, except by a table, which copies it.
  virtual void Add(const Row& row) = 0;
  /// Once, last.
  virtual void End(const ResultTail& tail) = 0;

 protected:
  explicit ResultWriter(ByteSink& out) : out_(out) {}
  /// Passes the text on where there is enough of it to be worth a call.
  void PassOn(std::size_t most = kBlock);

  std::string text_;  // written, and not yet passed on

 private:
  // 64 KiB.
  static constexpr std::size_t kBlock = std::size_t{1} << 16U;

  ByteSink& out_;
};

/// How a table shows what it holds. Only a table looks at it.
struct TableLook {
  int digits = 4;       // significant ones of a measured value
  bool isWide = false;  // long texts are not shortened
};

/// Aligned columns for reading: texts left, numbers by their decimal points. Holds the cells of all
/// rows, since the last may widen a column. Without --wide a text is at most 60 characters wide,
/// its middle left out.
std::unique_ptr<ResultWriter> MakeTableWriter(const ResultHead& head, const TableLook& look,
                                              ByteSink& out);
/// RFC 4180. What is not known is an empty field. Lines end in CR LF; the heading is always there.
std::unique_ptr<ResultWriter> MakeCsvWriter(const ResultHead& head, ByteSink& out);
/// One object: the facts, the lists and the rows, then what came last. What is not known is null, a
/// measured value always has a decimal point or an exponent.
std::unique_ptr<ResultWriter> MakeJsonWriter(const ResultHead& head, ByteSink& out);

/// The measured value in a cell, when it is a finite number. Valid as long as the cell; null for
/// everything else, counts too.
const double* ValueIn(const Cell& cell);

/// The text of a number with every digit; empty for another cell. A measured value in the shortest
/// text that gives the same double again.
std::string NumberText(const Cell& cell);
/// Appends it.
void AppendNumber(std::string& to, const Cell& cell);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_RESULT_WRITER_H_
