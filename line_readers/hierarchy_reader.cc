// The states of the hierarchical reader and what each makes of a line.
#include "line_readers/hierarchy_reader.h"

#include "line_readers/timescale.h"

namespace orsa::kesncd {

namespace {

// Lines of up to 4095 characters, as for the filtered reader.
constexpr std::size_t kTreeLineBytes = 4096;

/// Scopes of other kinds (begin, fork, ...) open no node: their signals land in the scope around
/// them, and their end closes that one. `$upscope $end` does not say what it closes.
bool OpensNode(const VcdLine& line, LineKind kind) {
  return kind == LineKind::Scope &&
         (line.Is(1, "module") || line.Is(1, "function") || line.Is(1, "task"));
}

}  // namespace

HierarchyReader::HierarchyReader(std::FILE* dump, DeclarationSink& sink, CodeCounts& counts,
                                 ReadingState& state, const ReadingOptions& options)
    : sink_(sink), lines_(dump, kTreeLineBytes, Splitters::Separate, counts, state, options) {}

bool HierarchyReader::Read() {
  VcdLine line{};
  while (lines_.Next(state_ == State::Body, line)) {
    if (!TakeLine(line)) return false;
  }
  return !lines_.Failed();
}

/// Takes one line; false when the reader stops. As in the flat readers a lone keyword comes first;
/// scopes come next here.
bool HierarchyReader::TakeLine(const VcdLine& line) {
  const LineKind kind = line.Kind();
  if (kind == LineKind::Timescale) {
    state_ = State::Timescale;
    return true;
  }
  if (SwitchRecording(kind, lines_.state())) return true;
  if (OpensNode(line, kind)) {
    // In every state: such a line after the definitions leads back into them, and one right after
    // "$timescale" leaves the time scale unread.
    sink_.OpenScope(line.words[2]);
    lines_.state().topMatched = 1;
    state_ = State::Definitions;
    return true;
  }
  // In Idle only a scope leads on: without one no value is ever read.
  switch (state_) {
    case State::Idle:
      return true;
    case State::Timescale:
      return TakeTimescaleLine(line);
    case State::Definitions:
      TakeDefinitionLine(line, kind);
      return true;
    case State::Body:
      lines_.TakeBodyLine(line, kind);
      return true;
  }
  return true;
}

/// The flat readers go on with the header after it, this one waits for the next scope.
bool HierarchyReader::TakeTimescaleLine(const VcdLine& line) {
  double& nsPerTick = lines_.state().nsPerTick;
  nsPerTick = ReadTimescale(line.words, line.count, nsPerTick);
  state_ = State::Idle;
  return nsPerTick != -1.0;
}

/// A scope line of another kind is none of these and is passed over.
void HierarchyReader::TakeDefinitionLine(const VcdLine& line, LineKind kind) {
  if (kind == LineKind::Upscope) {
    sink_.CloseScope();
  } else if (kind == LineKind::EndDefinitions) {
    state_ = State::Body;
    sink_.EndDefinitions();
  } else {
    Declaration declaration;
    if (ReadDeclaration(line, declaration)) sink_.Declare(declaration);
  }
}

}  // namespace orsa::kesncd
