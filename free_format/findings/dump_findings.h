// What the library's readers would get wrong in a dump.
#ifndef KESNCD_FREE_FORMAT_FINDINGS_DUMP_FINDINGS_H_
#define KESNCD_FREE_FORMAT_FINDINGS_DUMP_FINDINGS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "free_format/dump_words.h"
#include "free_format/findings/body_account.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// The most harmful first, as far as they do harm (see IsFault). A new kind gets its row in the
/// table of texts, which is in this order.
enum class FindingKind {
  Packed,
  Shrank,
  Grows,
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
  SwitchedOff,
  Ports,
  MisreadSpan,
  HugeStamps,
  CutStamp,
  BadStamps,
  Backward,
  DumpingOff,
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
  StaysUnknown,
  TurnsUnknown,
  UnknownBits,
  Undeclared,
  Strings,
  Unended,
  TornValue,
  OpenEnd,
  LateDeclarations,
  Malformed,
  Strays,
  Fractions,
  Escaped,
  TwoIndices,
  Parentheses,
  Collisions,
  WideRanges,
  NotHandled,
};

/// What a finding does to the figures of the dump as it stands; a remedy names what helps.
enum class Severity {
  WrongFigures,  // some are wrong, or lack what the dump says or should say
  WorthKnowing,  // they are what they are called, but a user may take them for something else
};

/// Whose reading of the dump a finding is about. The reader of a finding asks first whether it is
/// about one of their runs.
enum class Concerns {
  AllRuns,        // the program's own and those of hosts
  Hosts,          // the library's line readers, and so --as-is
  GrammarReader,  // nobody but the flat run's other reader
};

/// What a user can do about a finding. Their texts are commands or pieces of advice; see the table.
enum class Remedy {
  None,
  Unpack,
  Prepare,
  GiveTimescale,
  SimulateAgain,
  SimulateLonger,
  AwaitEnd,
  KeepDumping,
  FixDump,
  FinerTimescale,
  CoarserTimescale,
  ChooseTop,
  SeeWhetherInitial,
  ResetDesign,
  TraceDrivers,
  AskAsWritten,
  ReadAsElement,
  FindOrTree,
  LeaveMemoriesOut,
  UsePlainSignals,
};

/// The tally says how often, and where first.
struct Finding {
  FindingKind kind;
  Tally tally;
};

/// A kind in words, and what is known of every finding of the kind.
struct FindingText {
  std::string_view finding;  // "signals not reachable from the tree's root"
  std::string_view of;       // what the count is of: "signals"
  Severity severity;
  Concerns concerns;
  Remedy remedy;
};
// One text each, the same for all findings of the kind.
const FindingText& TextOf(FindingKind kind);
std::string_view TextOf(Severity severity);
std::string_view TextOf(Concerns concerns);
std::string_view TextOf(Remedy remedy);

/// Whether a run of the program or of a host gives a wrong or incomplete figure. The exit status of
/// `check` follows from it.
bool IsFault(FindingKind kind);

/// Faults first, the most harmful before the others, then what is worth knowing, then what is about
/// the grammar reader alone.
void SortFindings(std::vector<Finding>& findings);

/// What is found so far; kinds that were not met are left out. Add what each part of a dump shows,
/// in any order, then Sorted once.
class Findings {
 public:
  // An empty tally adds nothing.
  void Add(FindingKind kind, const Tally& tally) {
    if (tally) found_.push_back({kind, tally});
  }
  /// A finding about the dump as a whole. `line` 0 where no line shows it. One count, with
  /// `example` in it.
  void Add(FindingKind kind, bool isSo, std::uint64_t line, std::string_view example);
  /// All, in the order of SortFindings.
  std::vector<Finding> Sorted() &&;

 private:
  std::vector<Finding> found_;
};

/// What the declarations alone show; CheckDump adds what the body does.
void FindInDeclarations(const Declarations& declarations, Findings& findings);
/// Names that do not match a design's or one another.
void FindInNames(const Declarations& declarations, Findings& findings);

/// All that one reading of a dump shows.
struct DumpCheck {
  Declarations declarations;
  BodyFacts body;
  std::vector<Finding> findings;  // in the order of SortFindings
};

/// Throws Failure with Unusable for what is no VCD file or declares no variable; messages call the
/// dump `name`. `packing` is what the bytes were unpacked from, if they were. Reads the whole of
/// `in`, whose blocks are of `block` bytes; tests ask for small ones.
DumpCheck CheckDump(ByteSource& in, const std::string& name, std::string_view packing = "",
                    std::size_t block = DumpWords::kBlock);
/// The same of a plain file, with as many threads as there may be. The result does not depend on
/// them.
DumpCheck CheckDump(ByteFile& file, const std::string& name, unsigned jobs,
                    std::size_t block = DumpWords::kBlock);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_FINDINGS_DUMP_FINDINGS_H_
