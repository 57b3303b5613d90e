// The hierarchical reader: every scope of a dump with its declarations, and every change counted.
#ifndef KESNCD_LINE_READERS_HIERARCHY_READER_H_
#define KESNCD_LINE_READERS_HIERARCHY_READER_H_

#include <cstdio>

#include "line_readers/declaration_sink.h"
#include "line_readers/dump_lines.h"
#include "line_readers/vcd_line.h"

namespace orsa::kesncd {

/// Construct it for one dump, then Read once. State Idle waits for a scope, Timescale takes the
/// next line as one, Definitions builds the tree, Body counts until a scope opens again.
class HierarchyReader {
 public:
  HierarchyReader(std::FILE* dump, DeclarationSink& sink, CodeCounts& counts, ReadingState& state,
                  const ReadingOptions& options);

  /// Reads to the end of the dump; false when it stops at a time scale that is not understood or
  /// at a read error. Counts, span and tree of what was read until then stay.
  bool Read();

 private:
  enum class State { Idle, Timescale, Definitions, Body };

  bool TakeLine(const VcdLine& line);
  bool TakeTimescaleLine(const VcdLine& line);
  void TakeDefinitionLine(const VcdLine& line, LineKind kind);

  DeclarationSink& sink_;
  DumpLines lines_;
  State state_ = State::Idle;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_HIERARCHY_READER_H_
