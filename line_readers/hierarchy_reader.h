// The hierarchical reader: scopes become the module tree, declarations their signals, and every
// change counts in each scope that declared its code.
#ifndef KESNCD_LINE_READERS_HIERARCHY_READER_H_
#define KESNCD_LINE_READERS_HIERARCHY_READER_H_

#include <cstdio>
#include <string>

#include "kesncd/kesncd.h"
#include "line_readers/code_index.h"
#include "line_readers/dump_lines.h"
#include "line_readers/vcd_line.h"

namespace orsa::kesncd {

class HierarchyReader {
 public:
  /// Fills the tree and the code index of `analyser`.
  HierarchyReader(std::FILE* dump, KesNCD& analyser);

  /// Reads to the end of the dump; false when it stops at a time scale that is not understood or
  /// at a read error.
  bool Read();

 private:
  enum class State { Idle, Timescale, Definitions, Body };

  bool ReadLines();
  bool TakeLine(const VcdLine& line);
  void TakeDefinitionLine(const VcdLine& line, LineKind kind);
  void OpenScope(const char* name);
  void Declare(const VcdLine& line);
  void IndexDeclarations();
  void WriteCounts(const std::string& code);

  KesNCD& analyser_;
  DumpLines lines_;  // counts the codes that this reading brought into the index
  DeclarationList declarations_;
  VmodHier* current_ = nullptr;
  State state_ = State::Idle;
  bool counting_ = false;  // the definitions have ended once
};

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_HIERARCHY_READER_H_
