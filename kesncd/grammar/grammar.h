// The grammar of a dump.
//
// A file is a run of declaration commands and then a run of dump items: single words (a time stamp,
// a change, or the code that belongs to the value before it) and dump sections that hold such
// words. The lexer swallows comments, date, version and "$enddefinitions", so none of them stands
// here. The lists are left-recursive: a dump of any length needs a handful of stack entries.
#ifndef KESNCD_GRAMMAR_GRAMMAR_H_
#define KESNCD_GRAMMAR_GRAMMAR_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "kesncd/grammar/tokens.h"

namespace orsa::kesncd {

/// The left sides of the rules, numbered after the tokens. A file such as "$timescale 1 ns $end
/// $scope module tb $end ... $enddefinitions $end #0 1!" is read as file: declarations dumps.
enum Nonterminal : int {
  kStart = kVersion + 1,
  kFile,
  kDeclarations,
  kDeclaration,
  kScopeCommand,
  kTimescaleCommand,
  kUpscopeCommand,
  kVariable,
  kDumps,
  kDumpItem,
  kDumpCommand,
  kValues,
  kValue,
};
/// Tokens are smaller, so one comparison tells what a symbol is.
inline constexpr int kFirstNonterminal = kStart;
inline constexpr int kNonterminals = kValue - kStart + 1;

/// What the reader does when a rule has been read (see actions.h). One byte, for it stands in every
/// reduction of the tables.
enum class Action : std::uint8_t {
  None,
  OneWordTimescale,
  TwoWordTimescale,
  EnterScope,
  LeaveScope,
  Declare,
  DeclareRange,
  StartDumpall,
  StartDumpvars,
  StartDumpon,
  StartDumpoff,
  EndDump,
  TakeValue,
};

/// The symbols on the right of a rule: seven in the longest one, a variable with its range.
class RightSide {
 public:
  constexpr RightSide(std::initializer_list<int> symbols)
      : size_(static_cast<std::uint32_t>(symbols.size())) {
    std::copy(symbols.begin(), symbols.end(), symbols_.begin());
  }
  constexpr int operator[](std::size_t index) const { return symbols_[index]; }
  constexpr std::size_t size() const { return size_; }

 private:
  std::array<int, 7> symbols_ = {};
  std::uint32_t size_;
};

/// `left` is made of `right`.
struct Rule {
  Nonterminal left;
  RightSide right;
  Action action = Action::None;
};

/// The rules by their numbers; number 0 accepts. The blocks are the file, declarations, their
/// commands, dump items, and values.
inline constexpr Rule kGrammar[] = {
    /*  0 */ {kStart, {kFile}},
    /*  1 */ {kFile, {kDeclarations, kDumps}},

    /*  2 */ {kDeclarations, {}},
    /*  3 */ {kDeclarations, {kDeclarations, kDeclaration}},
    /*  4 */ {kDeclaration, {kScopeCommand}},
    /*  5 */ {kDeclaration, {kTimescaleCommand}},
    /*  6 */ {kDeclaration, {kUpscopeCommand}},
    /*  7 */ {kDeclaration, {kVariable}},

    // $scope module tb $end
    /*  8 */ {kScopeCommand, {kScope, kWord, kWord, kEnd}, Action::EnterScope},
    // $timescale 1ns $end
    /*  9 */ {kTimescaleCommand, {kTimescale, kWord, kEnd}, Action::OneWordTimescale},
    // $timescale 1 ns $end
    /* 10 */ {kTimescaleCommand, {kTimescale, kWord, kWord, kEnd}, Action::TwoWordTimescale},
    // $upscope $end
    /* 11 */ {kUpscopeCommand, {kUpscope, kEnd}, Action::LeaveScope},
    // $var wire 8 # q $end
    /* 12 */ {kVariable, {kVar, kWord, kWord, kWord, kWord, kEnd}, Action::Declare},
    // $var wire 8 # q [7:0] $end
    /* 13 */ {kVariable, {kVar, kWord, kWord, kWord, kWord, kWord, kEnd}, Action::DeclareRange},

    /* 14 */ {kDumps, {}},
    /* 15 */ {kDumps, {kDumps, kDumpItem}},
    /* 16 */ {kDumpItem, {kValue}},
    // $dumpvars 0! b0110 # $end
    /* 17 */ {kDumpItem, {kDumpCommand, kValues, kEnd}, Action::EndDump},
    /* 18 */ {kDumpCommand, {kDumpall}, Action::StartDumpall},
    /* 19 */ {kDumpCommand, {kDumpvars}, Action::StartDumpvars},
    /* 20 */ {kDumpCommand, {kDumpon}, Action::StartDumpon},
    /* 21 */ {kDumpCommand, {kDumpoff}, Action::StartDumpoff},

    /* 22 */ {kValues, {}},
    /* 23 */ {kValues, {kValues, kValue}},
    // #100, 1!, b0110, or the code after such a value
    /* 24 */ {kValue, {kWord}, Action::TakeValue},
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_GRAMMAR_H_
