// The flat readers: one machine that collects the variables declared directly in the top module
// into `topMod` and counts their changes, under two sets of rules.
#ifndef KESNCD_LINE_READERS_FLAT_READER_H_
#define KESNCD_LINE_READERS_FLAT_READER_H_

#include <cstddef>
#include <cstdio>
#include <set>
#include <string>

#include "kesncd/kesncd.h"
#include "line_readers/dump_lines.h"
#include "line_readers/vcd_line.h"

namespace orsa::kesncd {

/// What sets the flat readers apart.
struct FlatRules {
  std::size_t lineBytes;                   // longer lines arrive in pieces
  const std::set<std::string>* selection;  // names to take; null takes every variable
  bool countsEarlierSignals;               // codes that topMod held before the reading count too
  Splitters splitters;                     // of words and of stamps
};

/// Every variable of the top module.
FlatRules UnfilteredRules();
/// The selected variables, and every one with a bit index or a range.
FlatRules FilteredRules(const std::set<std::string>& selection);

class FlatReader {
 public:
  FlatReader(std::FILE* dump, const FlatRules& rules);

  /// Reads to the end of the dump. False when it gives up before: a time scale that is not
  /// understood, a top module without a variable before its first sub-module, definitions that end
  /// without the top module, or a read error.
  bool Read();

 private:
  enum class State { Searching, Timescale, TopModule, Body };

  bool ReadLines();
  bool TakeLine(const VcdLine& line);
  bool TakeHeaderLine(const VcdLine& line, LineKind kind);
  bool TakeTimescaleLine(const VcdLine& line);
  bool TakeTopModuleLine(const VcdLine& line, LineKind kind);
  bool Selects(const std::string& name) const;

  const FlatRules rules_;
  std::set<std::string> flatSelection_;  // the selection with "/" turned into "_"
  DumpLines lines_;
  State state_ = State::Searching;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_FLAT_READER_H_
