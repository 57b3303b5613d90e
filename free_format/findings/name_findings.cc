// Names that do not match a design's, or that several signals have in the flat map.
#include <algorithm>
#include <charconv>
#include <tuple>

#include "free_format/findings/dump_findings.h"
#include "free_format/prepare/new_codes.h"

namespace orsa::kesncd {

namespace {

// A flat run prints a row for each bit.
constexpr std::uint32_t kWide = 4096;

/// The names that a variable has in the flat map: the base alone, or with each number from `low` to
/// `high` after a "_", such as q_3.
struct FlatNames {
  std::string_view base;
  // -1, as `high`: the base alone.
  std::int64_t low = -1;
  std::int64_t high = -1;
  // The index in the declarations.
  std::uint32_t variable = 0;
};

/// Gives 0 where no number is there.
std::int64_t IndexIn(std::string_view text) {
  std::int32_t number = 0;
  (void)std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// "q[7:0]" is q with 0 to 7; "q[3]" and "q_3" are q with 3. The numbers overlap where two
/// variables give the same row.
FlatNames FlatNamesOf(std::string_view name, std::uint32_t variable) {
  // Only the first index counts: "mem[0][31:0]" is mem with 0.
  name = name.substr(0, name.find(']'));
  const std::size_t bracket = name.find('[');
  if (bracket != std::string_view::npos) {
    const std::string_view range = name.substr(bracket + 1);
    const std::int64_t left = IndexIn(range);
    const std::size_t colon = range.find(':');
    const std::int64_t right =
        colon == std::string_view::npos ? left : IndexIn(range.substr(colon + 1));
    return {name.substr(0, bracket), std::min(left, right), std::max(left, right), variable};
  }
  // "q_3" as a name of its own meets the row of bit 3 of q.
  const std::size_t underscore = name.rfind('_');
  const std::string_view digits =
      underscore == std::string_view::npos ? "" : name.substr(underscore + 1);
  // Numbers that a range could have, and as a row writes them: without zeros in front.
  const bool isNumber = !digits.empty() && digits.size() < 10 &&
                        digits.find_first_not_of("0123456789") == std::string_view::npos &&
                        (digits == "0" || digits.front() != '0');
  if (!isNumber) return {name, -1, -1, variable};
  return {name.substr(0, underscore), IndexIn(digits), IndexIn(digits), variable};
}

/// Variables of one scope some of whose flat names another one has too.
void FindCollisions(const Declarations& declarations, const DumpScope& scope,
                    const std::vector<CodeShare>& shares, Tally& collisions) {
  std::vector<FlatNames> names;
  // A name that is repeated with its code is the same signal.
  for (const std::uint32_t index : scope.variables) {
    if (shares[index].isRepeated) continue;
    names.push_back(FlatNamesOf(declarations.variables[index].name, index));
  }
  // By base and then by number, so that overlaps are neighbours; of equal ones the first declared
  // has the row.
  std::sort(names.begin(), names.end(), [](const FlatNames& a, const FlatNames& b) {
    return std::tie(a.base, a.low, a.variable) < std::tie(b.base, b.low, b.variable);
  });
  // The highest number that the base has so far.
  std::int64_t reached = -1;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool isNewBase = i == 0 || names[i].base != names[i - 1].base;
    if (!isNewBase && names[i].low <= reached) {
      const DumpVariable& variable = declarations.variables[names[i].variable];
      collisions.Add(variable.line, declarations.ShortPathOf(variable));
    }
    reached = isNewBase ? names[i].high : std::max(reached, names[i].high);
  }
}

}  // namespace

void FindInNames(const Declarations& declarations, Findings& findings) {
  Tally escaped;
  Tally indices;
  Tally parentheses;
  Tally wide;
  Tally collisions;
  std::vector<bool> hasParentheses(declarations.scopes.size());
  // Asked once for all scopes.
  const auto shares = ShareCodes(declarations);
  for (std::size_t i = 0; i < declarations.scopes.size(); ++i) {
    const DumpScope& scope = declarations.scopes[i];
    // A scope comes after the one around it. An instance in a generate loop has parentheses in
    // VHDL, and all below it in their paths.
    hasParentheses[i] = hasParentheses[scope.parent] || scope.name.find('(') != std::string::npos;
    FindCollisions(declarations, scope, shares, collisions);
  }
  for (const DumpVariable& variable : declarations.variables) {
    const std::string& name = variable.name;
    const auto add = [&](Tally& tally, bool isSo) {
      if (isSo) tally.Add(variable.line, tally ? "" : declarations.ShortPathOf(variable));
    };
    add(escaped, name.front() == '\\');
    // The first bracket is not the last one.
    add(indices, name.find('[') != name.rfind('['));
    add(parentheses, hasParentheses[variable.scope] || name.find('(') != std::string::npos);
    add(wide, variable.width > kWide);
  }
  findings.Add(FindingKind::Escaped, escaped);
  findings.Add(FindingKind::TwoIndices, indices);
  findings.Add(FindingKind::Parentheses, parentheses);
  findings.Add(FindingKind::Collisions, collisions);
  findings.Add(FindingKind::WideRanges, wide);
}

}  // namespace orsa::kesncd
