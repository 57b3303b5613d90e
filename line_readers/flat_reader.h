// The flat readers: one machine that collects the variables declared directly in the top module and
// counts their changes, under two sets of rules.
#ifndef KESNCD_LINE_READERS_FLAT_READER_H_
#define KESNCD_LINE_READERS_FLAT_READER_H_

#include <cstddef>
#include <cstdio>
#include <set>
#include <string>

#include "line_readers/declaration_sink.h"
#include "line_readers/dump_lines.h"
#include "line_readers/vcd_line.h"

namespace orsa::kesncd {

/// What sets the flat readers apart. Made by the two functions below. The selection is the caller's
/// and must outlive the reader.
struct FlatRules {
  std::size_t lineBytes;                   // longer lines arrive in pieces
  const std::set<std::string>* selection;  // names to take; null takes every variable
  Splitters splitters;                     // of words and of stamps
};

/// Every variable of the top module.
FlatRules UnfilteredRules();
/// The selected variables, and every one with a bit index or a range.
FlatRules FilteredRules(const std::set<std::string>& selection);

/// The module that a flat reading fills, as it is before the reading. A module may have been filled
/// by an earlier reading, whose results count as found.
struct FlatTarget {
  const char* topModule;  // the scope to look for; null matches none
  bool isNamed;           // a scope was matched before
  bool hasSignals;
};

/// Construct it for one dump, then Read once. Its state is a line's meaning: Searching looks for
/// the top module in the header, Timescale takes the next line as one, TopModule collects, Body
/// counts.
class FlatReader {
 public:
  /// The sink's scope is the top module, its variables are those that the rules select.
  FlatReader(std::FILE* dump, const FlatRules& rules, const FlatTarget& target,
             DeclarationSink& sink, CodeCounts& counts, ReadingState& state,
             const ReadingOptions& options);

  /// Reads to the end of the dump. False when it gives up before: a time scale that is not
  /// understood, a top module without a variable before its first sub-module, definitions that end
  /// without the top module, or a read error. Counts and span of what was read until then stay.
  bool Read();

 private:
  enum class State { Searching, Timescale, TopModule, Body };

  // Each takes a line in its state; false gives up.
  bool TakeLine(const VcdLine& line);
  bool TakeHeaderLine(const VcdLine& line, LineKind kind);
  bool TakeTimescaleLine(const VcdLine& line);
  bool TakeTopModuleLine(const VcdLine& line, LineKind kind);
  bool Selects(const std::string& name) const;

  const FlatRules rules_;
  FlatTarget target_;
  DeclarationSink& sink_;
  // Asked for names without a range, as the selection itself is.
  std::set<std::string> flatSelection_;  // the selection with "/" turned into "_"
  DumpLines lines_;
  State state_ = State::Searching;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_FLAT_READER_H_
