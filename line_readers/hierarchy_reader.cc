#include "line_readers/hierarchy_reader.h"

#include <memory>
#include <utility>

#include "line_readers/dump_rules.h"
#include "line_readers/timescale.h"

namespace orsa::kesncd {

namespace {

constexpr std::size_t kLineBytes = 4096;

/// Scopes of other kinds (begin, fork, ...) open no node: their signals land in the scope around
/// them, and their end closes that one.
bool OpensNode(const VcdLine& line, LineKind kind) {
  return kind == LineKind::Scope &&
         (line.Is(1, "module") || line.Is(1, "function") || line.Is(1, "task"));
}

}  // namespace

HierarchyReader::HierarchyReader(std::FILE* dump, KesNCD& analyser)
    : analyser_(analyser), lines_(dump, kLineBytes, Splitters::Separate) {}

bool HierarchyReader::Read() {
  const bool complete = ReadLines();
  IndexDeclarations();
  declarations_.AddCounts(lines_.counts());
  return complete;
}

bool HierarchyReader::ReadLines() {
  VcdLine line{};
  while (lines_.Next(state_ == State::Body, line)) {
    if (!TakeLine(line)) return false;
  }
  return !lines_.Failed();
}

/// Takes one line; false when the reader stops.
bool HierarchyReader::TakeLine(const VcdLine& line) {
  const LineKind kind = line.Kind();
  if (kind == LineKind::Timescale) {
    state_ = State::Timescale;
    return true;
  }
  if (SwitchRecording(kind)) return true;
  if (OpensNode(line, kind)) {  // in every state, also after the definitions
    OpenScope(line.words[2]);
    return true;
  }
  switch (state_) {
    case State::Idle:
      return true;
    case State::Timescale:
      timeScale = ReadTimescale(line.words, line.count);
      state_ = State::Idle;
      return timeScale != -1.0;
    case State::Definitions:
      TakeDefinitionLine(line, kind);
      return true;
    case State::Body:
      lines_.TakeBodyLine(line, kind);
      return true;
  }
  return true;
}

void HierarchyReader::TakeDefinitionLine(const VcdLine& line, LineKind kind) {
  if (kind == LineKind::Upscope) {
    if (current_ != nullptr) current_ = current_->parent;
  } else if (kind == LineKind::EndDefinitions) {
    state_ = State::Body;
    counting_ = true;
    IndexDeclarations();
  } else {
    Declare(line);
  }
}

void HierarchyReader::OpenScope(const char* name) {
  auto node = std::make_unique<VmodHier>(name);
  node->parent = current_;
  if (analyser_.hierRoot == nullptr) {
    analyser_.hierRoot = node.get();
  } else if (current_ != nullptr) {
    current_->AddSubMod(node.get());
  } else {
    // A further top-level scope: its signals count, but nothing leads to it from the root.
    analyser_.unlinkedScopes_.push_back(node.get());
  }
  current_ = node.release();
  state_ = State::Definitions;
  isTopModNameEverMatched = 1;
}

void HierarchyReader::Declare(const VcdLine& line) {
  Declaration declaration;
  if (current_ == nullptr || !ReadDeclaration(line, declaration)) return;
  WriteCounts(declaration.code);
  VmodSignal& signal = current_->Declare(std::move(declaration.name), std::move(declaration.type),
                                         std::move(declaration.code), declaration.width);
  declarations_.Append(current_, signal);
}

/// Brings the code index up to the declarations so far, before changes are read.
void HierarchyReader::IndexDeclarations() {
  declarations_.Index(analyser_.codeIndex, lines_.counts());
}

/// Gives a code's changes so far to the scopes that declared it: they are not those of a scope that
/// declares it now.
void HierarchyReader::WriteCounts(const std::string& code) {
  if (!counting_) return;
  const std::uint32_t changes = lines_.counts().Take(code);
  if (changes == 0) return;
  for (VmodHier* scope : analyser_.codeIndex[code]) scope->AddChanges(code, changes);
}

}  // namespace orsa::kesncd
