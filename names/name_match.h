// Name matching: whether a name of the dump and a name of the design mean the same object.
// NamesMatch answers it for one pair, NameIndex for many names at once; both are made of the parts
// below it: what a name of the dump stands for, and what a name of the design may mean.
#ifndef KESNCD_NAMES_NAME_MATCH_H_
#define KESNCD_NAMES_NAME_MATCH_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Whether the two names mean the same object; see VmodHier::IsNameEqual. "exact" false ignores
/// letter case. A signal "data[7:0]" is meant by "data[5]" and "data_5_", a signal "data[5]" by the
/// same two.
bool NamesMatch(std::string_view dumpName, std::string_view designName, bool exact);

/// What a name of the dump stands for. What it holds of the name is a view into that.
struct DumpName {
  enum class Kind {
    Nothing,  // a ':' where no range is: matches no name
    Plain,    // `text`, which may end in a bit index
    Range,    // `text` with each index from `low` to `high` in brackets after it
  };

  Kind kind;
  std::string_view text;
  // Both have 32 bits, and `low` is not above `high`.
  std::int64_t low = 0;
  std::int64_t high = 0;
};

/// The last bracket is the range's; "[0:7]" is the same range as "[7:0]".
DumpName ParseDumpName(std::string_view name);

/// A plain name with the bit index at its end written as a design writes it: "cnt[3]" is "cnt_3_".
/// Nothing where the name has no index.
std::optional<std::string> RewriteBitIndex(std::string_view name);

/// How the "/" of a design name are read: as they stand, or as "_".
enum class Slashes { Kept, Flat };

/// A design name that ends in an index: "data[5]" or "data_5_". The index is written as an integer
/// is: no leading zero, no sign but '-'.
struct IndexedName {
  std::string_view base;
  std::int64_t index;
};

/// "data[05]" has no index, since no host writes one so; "data[-1]" has.
std::optional<IndexedName> SplitIndex(std::string_view design, Slashes slashes);

/// The part of a name that comparing sees: all of it, or as far as a C string goes when letter case
/// is ignored.
std::string_view SeenPart(std::string_view name, bool exact);

/// The capital letter that a dump's name may have after a design's. A signal "clkI" is found under
/// "clk"; hosts rely on it.
inline constexpr char kExtraLetter = 'I';

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_NAME_MATCH_H_
