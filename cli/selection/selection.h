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

enum class SortBy { Nothing, Toggles, Rate, Name };

struct SelectionOptions {
  SortBy sort = SortBy::Nothing;
  std::uint64_t limit = UINT64_MAX;
  std::vector<std::string> match;
};

/// Adds --sort, --limit and --match.
void AddSelectionOptions(Command& command, SelectionOptions& options);

/// The patterns that names are to match; none of them: every name does.
class PathFilter {
 public:
  explicit PathFilter(const std::vector<std::string>& patterns);

  bool IsOpen() const { return globs_.empty(); }
  /// Whether one matches the path of something called `name` in a scope.
  bool Takes(std::string_view scopePath, std::string_view name) const;

 private:
  std::vector<PathGlob> globs_;
};

/// What a row is sorted by; rows of which it is not known come last.
struct SortKeys {
  std::string_view name;
  std::optional<double> toggles;
  std::optional<double> rate;
};

/// Rows on their way to an output: those that are wanted, in the order that is wanted. Without an
/// order they pass through. Calling order: construct, Add, Finish. Add throws Failure with Unusable
/// where rows that wait for their order take too much memory: those of a hostile dump may have
/// paths as long as the dump.
class SelectedRows {
 public:
  SelectedRows(const SelectionOptions& options, ResultOutput& out)
      : sort_(options.sort), limit_(options.limit), out_(out) {}

  /// Whether a row of those figures may still get into the result: what makes it may be left out
  /// otherwise.
  bool Wants(std::optional<double> toggles, std::optional<double> rate) const;
  void Add(const SortKeys& keys, Row row);
  /// Writes the rows that waited for their order.
  void Finish();

 private:
  struct Kept {
    double key;
    std::string name;
    Row row;
  };

  double KeyOf(std::optional<double> toggles, std::optional<double> rate) const;
  bool IsBefore(const Kept& a, const Kept& b) const;
  void MakeRoom();
  void DropAllBut(std::uint64_t most);

  const SortBy sort_;
  const std::uint64_t limit_;
  ResultOutput& out_;
  std::uint64_t passed_ = 0;
  std::vector<Kept> kept_;
  static constexpr std::size_t kWorthBytes = std::size_t{1} << 26;
  std::size_t keptBytes_ = 0;             // of texts
  std::size_t worthBytes_ = kWorthBytes;  // with more of them rows are let go of
  std::optional<double> least_;           // key of the last of as many rows as there may be
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_SELECTION_SELECTION_H_
