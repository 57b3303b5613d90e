// What a dump declares, read in free format: its time scale and its scopes as a tree.
#ifndef KESNCD_VCD_DECLARATIONS_H_
#define KESNCD_VCD_DECLARATIONS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vcd/code_table.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// A line such as "$var reg 4 # count [3:0] $end".
struct DumpVariable {
  std::string name;            // as the dump writes it, a range glued on; never empty
  std::uint32_t nameWord = 0;  // where its last word that begins with "[" does; else its length
  std::uint32_t typeId = 0;    // see Declarations::TypeOf
  std::uint32_t width = 0;     // 0 where the dump gives no positive number
  std::uint32_t codeId = 0;    // the number of its identifier code in `codes`
  // The index of the scope that declares it.
  std::uint32_t scope = 0;
  // The line of its $var in the dump, from 1.
  std::uint64_t line = 0;
};

/// A line such as "$scope module dut $end". A scope that is opened again under the same path is the
/// same scope.
struct DumpScope {
  std::string name;  // never empty
  std::string kind;  // "module", "begin", ...
  // The index of the scope around it; kDump for a top-level scope.
  std::uint32_t parent = 0;
  std::uint64_t line = 0;
  bool populated = false;  // it or a scope below it declares variables
  // Indices of the scopes directly in it, in the dump's order.
  std::vector<std::uint32_t> scopes;
  // Indices of the variables that it declares itself.
  std::vector<std::uint32_t> variables;
};

/// Whether the hierarchical reader makes a scope of that kind a node of its tree. Variables of
/// other scopes land in the node around.
inline bool IsTreeKind(const std::string& kind) {
  return kind == "module" || kind == "function" || kind == "task";
}

/// What the library's line readers, which see a keyword only on a line of its own and know three
/// kinds of scopes, would make of declarations. All of it is counted while the declarations are
/// read; findings turn it into messages.
struct LineReading {
  bool timescale = false;  // they read it
  Tally lateTimescale;     // time scales after a scope, which close it and all around it for them
  Tally overlooked;        // variables that stand on no line of theirs
  Tally scopeLines;        // the same of $scope, $upscope and $enddefinitions
  Tally quoted;            // lines of comments that look like declarations
  Tally keywords;          // keywords in capitals, which they do not know
  Tally wrongScope;        // variables put into another scope of the tree
  Tally unreachable;       // variables that no way leads to from the tree's root
  Tally late;              // variables declared after a sub-scope: no flat run takes them
  Tally split;             // scopes opened again under the same path
  Tally grammarCodes;      // vectors whose code the grammar reader takes for a time or a value
  Tally attributes;        // sections that the grammar reader does not know
  Tally switchedOff;       // "$dumpoff" before $enddefinitions, which counts there for them alone
};

/// Filled by DeclarationReader from front to back and only read afterwards. Scopes and variables
/// are named by their indices, which do not change.
struct Declarations {
  static constexpr std::uint32_t kDump = 0;  // the scope that holds the top-level ones

  // The scope [kDump] is the dump itself; a scope comes after the one around it.
  std::vector<DumpScope> scopes;
  std::vector<DumpVariable> variables;
  // Holds every code once, in the order of first declarations.
  CodeTable codes;
  // There is none where the time scale is missing or says no time.
  std::optional<std::uint64_t> tick;  // femtoseconds
  std::string timescale;              // as it stands in the dump; empty for none
  std::uint64_t timescaleLine = 0;
  std::string date;     // the words of $date, parted by blanks
  std::string version;  // of $version: the simulator
  // Holds each type once; a variable has its index.
  std::vector<std::string> types;  // "wire", "reg", ... as the dump writes them
  std::size_t longestCode = 0;     // characters
  std::uint32_t widest = 0;        // bits of the widest variable
  Tally malformed;                 // $var without a code
  Tally unbalanced;                // $upscope with nothing open
  Tally notHandled;                // signals that the simulator says it left out
  Tally unnamed;                   // variables and scopes without a name, which are given one
  bool ended = false;              // by $enddefinitions
  bool hasWord = false;            // the last word taken already belongs to the body
  LineReading lines;

  const std::string& TypeOf(const DumpVariable& variable) const { return types[variable.typeId]; }

  /// The path of a scope, or of a variable, from a top-level scope: "tb/dut/q". Empty for kDump.
  std::string PathOf(std::uint32_t scope) const;
  std::string PathOf(const DumpVariable& variable) const;
  /// The path of a scope from below `top`, a scope around it.
  std::string PathBelow(std::uint32_t top, std::uint32_t scope) const;
  /// The same for a message: the middle of a long one is left out. A few hundred characters at
  /// most, whatever the dump.
  std::string ShortPathOf(std::uint32_t scope) const;
  std::string ShortPathOf(const DumpVariable& variable) const;
};

/// The outermost module that declares variables; of several, the one with most of them in it and
/// below it, since packages stand beside a design too. Where no module does, the same of all
/// scopes. kDump when there is none. `check` proposes it, and commands take it where no scope is
/// named.
std::uint32_t OutermostWithVariables(const Declarations& declarations);

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_DECLARATIONS_H_
