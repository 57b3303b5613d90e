// What the library's readers would get wrong in a dump.
#ifndef KESNCD_FREE_FORMAT_DUMP_FINDINGS_H_
#define KESNCD_FREE_FORMAT_DUMP_FINDINGS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "free_format/dump_words.h"
#include "vcd/declarations.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// The most harmful first.
enum class FindingKind {
  Packed,
  NoTimescale,
  OddTimescale,
  UnreadTimescale,
  LateTimescale,
  Torn,
  OpenDefinitions,
  NoSpan,
  Unreachable,
  Overlooked,
  ControlBytes,
  QuotedDeclarations,
  QuotedItems,
  Keywords,
  PortCommands,
  StampsNotAlone,
  ChangesInLine,
  CommandsNotAlone,
  Ports,
  MisreadSpan,
  CutStamp,
  BadStamps,
  Backward,
  Doubled,
  Hidden,
  WrongScope,
  Foreign,
  ScopeLines,
  Split,
  Late,
  EmptyTop,
  Weak,
  GrammarCodes,
  Attributes,
  LongValues,
  BeforeFirstStamp,
  Unknown,
  Undeclared,
  Strings,
  Unended,
  TornValue,
  LateDeclarations,
  Malformed,
  Strays,
  Fractions,
  Escaped,
  TwoIndices,
  Parentheses,
  Collisions,
  WideRanges,
};

struct Finding {
  FindingKind kind;
  Tally tally;
};

/// How a kind reads: "signals that cannot be reached ...", what it counts, and what to do.
struct FindingText {
  std::string_view finding;
  std::string_view of;
  std::string_view remedy;
};
const FindingText& TextOf(FindingKind kind);
/// Whether preparing the dump mends it.
bool IsMended(FindingKind kind);

/// What is found so far; kinds that were not met are left out.
class Findings {
 public:
  void Add(FindingKind kind, const Tally& tally) {
    if (tally) found_.push_back({kind, tally});
  }
  /// A finding about the dump as a whole.
  void Add(FindingKind kind, bool isSo, std::uint64_t line, std::string_view example);
  /// All, the most harmful first.
  std::vector<Finding> Sorted() &&;

 private:
  std::vector<Finding> found_;
};

/// What the declarations alone show.
void FindInDeclarations(const Declarations& declarations, Findings& findings);
/// Names that do not match a design's or one another.
void FindInNames(const Declarations& declarations, Findings& findings);

/// Figures of a body.
struct BodyFacts {
  std::uint64_t changes = 0;  // counted ones
  std::uint64_t unknown = 0;  // to x or z
  std::uint64_t stamps = 0;
  std::uint64_t firstTick = 0;
  std::uint64_t lastTick = 0;
};

/// Reads the body. `watch` has seen the words of the declarations.
BodyFacts FindInBody(DumpWords& words, SlotWatch& watch, const Declarations& declarations,
                     Findings& findings);

/// All that one reading of a dump shows.
struct DumpCheck {
  Declarations declarations;
  BodyFacts body;
  std::vector<Finding> findings;  // the most harmful first
};

/// Throws Failure with Unusable for what is no VCD file or declares no variable; messages call the
/// dump `name`. `packing` is what the bytes were unpacked from, if they were.
DumpCheck CheckDump(ByteSource& in, const std::string& name, std::string_view packing = "",
                    std::size_t block = DumpWords::kBlock);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_FINDINGS_H_
