// Which rows of a result a user wants, and in which order: those that patterns match, the busiest
// first, only so many. Dumps have more signals than anybody reads.
#ifndef KESNCD_CLI_SELECTION_SELECTION_H_
#define KESNCD_CLI_SELECTION_SELECTION_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options/option_list.h"
#include "cli/output/output.h"
#include "names/path_glob.h"

namespace orsa::kesncd::cli {

/// Nothing: the dump's order. Name: numbers in names count as numbers, so data[10] comes after
/// data[9].
enum class SortBy { Nothing, Toggles, Rate, Name };

/// What --sort, --limit and --match say; together: match first, then sort, then cut.
struct SelectionOptions {
  SortBy sort = SortBy::Nothing;
  std::uint64_t limit = UINT64_MAX;  // rows at most
  // Patterns of which one has to match; see PathGlob for what they may hold.
  std::vector<std::string> match;
};

/// Adds --sort, --limit and --match. Keeps a reference to `options`.
void AddSelectionOptions(Command& command, SelectionOptions& options);

/// The patterns that names are to match; none of them: every name does. Made once for a command,
/// then asked for each row.
class PathFilter {
 public:
  /// Takes the patterns apart, so that asking costs no more than comparing.
  explicit PathFilter(const std::vector<std::string>& patterns);

  /// Whether every name passes, so that a caller may save itself making paths.
  bool IsOpen() const { return globs_.empty(); }
  /// Whether one matches the path of something called `name` in a scope. `scopePath` is empty for
  /// what is in no scope.
  bool Takes(std::string_view scopePath, std::string_view name) const;

 private:
  std::vector<PathGlob> globs_;
};

/// What a row is sorted by; rows of which it is not known come last. `name` has to live only as
/// long as the call that it is given to.
struct SortKeys {
  std::string_view name;
  std::optional<double> toggles;
  std::optional<double> rate;
};

/// Rows on their way to an output: those that are wanted, in the order that is wanted. Without an
/// order they pass through. Calling order: construct, Add, Finish. Add throws Failure with Unusable
/// where rows that wait for their order take too much memory: those of a hostile dump may have
/// paths as long as the dump. Memory: with --limit N somewhat more than N rows are kept, else all
/// of them when an order is asked for, and none without one.
class SelectedRows {
 public:
  SelectedRows(const SelectionOptions& options, ResultOutput& out)
      : sort_(options.sort), limit_(options.limit), out_(out) {}

  /// Whether a row of those figures may still get into the result: it costs no more than a
  /// comparison, so that a caller need not make paths and texts of the others. May be true for a
  /// row that is dropped later, never false for one that belongs to the result.
  bool Wants(std::optional<double> toggles, std::optional<double> rate) const;
  /// The row has a cell for each column of the output. It may be written at once, later or never.
  void Add(const SortKeys& keys, const Row& row);
  /// Writes the rows that waited for their order.
  void Finish();

 private:
  // A row that waits, with what it is compared by.
  struct Kept {
    double key;        // toggles or rate; minus infinity where that is not known
    std::string name;  // only for the order by name, else empty
    Row row;
  };

  /// By `sort_`, one of the two; for other orders it is not looked at.
  double KeyOf(std::optional<double> toggles, std::optional<double> rate) const;
  /// A strict order: equal rows are before neither of each other, which keeps a stable sort stable.
  bool IsBefore(const Kept& a, const Kept& b) const;
  void MakeRoom();
  void DropAllBut(std::uint64_t most);

  const SortBy sort_;
  const std::uint64_t limit_;
  ResultOutput& out_;
  std::uint64_t passed_ = 0;
  // Unordered between two calls of DropAllBut.
  std::vector<Kept> kept_;
  // 64 MiB of texts: much less is not worth a sorting.
  static constexpr std::size_t kWorthBytes = std::size_t{1} << 26;
  std::size_t keptBytes_ = 0;             // of texts
  std::size_t worthBytes_ = kWorthBytes;  // with more of them rows are let go of
  std::optional<double> least_;           // key of the last of as many rows as there may be
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_SELECTION_SELECTION_H_
