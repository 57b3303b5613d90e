#include "line_readers/flat_reader.h"

#include <cstring>

#include "line_readers/dump_rules.h"
#include "line_readers/timescale.h"

namespace orsa::kesncd {

namespace {

bool IsModuleScope(const VcdLine& line, LineKind kind) {
  return kind == LineKind::Scope && line.Is(1, "module");
}

}  // namespace

FlatRules UnfilteredRules() {
  return {.lineBytes = 1024,
          .selection = nullptr,
          .countsEarlierSignals = true,
          .splitters = Splitters::Separate};
}

FlatRules FilteredRules(const std::set<std::string>& selection) {
  return {.lineBytes = 4096,
          .selection = &selection,
          .countsEarlierSignals = false,
          .splitters = Splitters::Shared};
}

FlatReader::FlatReader(std::FILE* dump, const FlatRules& rules)
    : rules_(rules), lines_(dump, rules.lineBytes, rules.splitters) {
  if (rules_.selection != nullptr) {
    for (const std::string& name : *rules_.selection) {
      flatSelection_.insert(VmodHier::GetNameFlat(name));
    }
  }
  if (rules_.countsEarlierSignals) lines_.counts().AddSymbols(topMod);
}

bool FlatReader::Read() {
  const bool complete = ReadLines();
  lines_.counts().WriteTo(topMod);
  return complete;
}

bool FlatReader::ReadLines() {
  VcdLine line{};
  while (lines_.Next(state_ == State::Body, line)) {
    if (!TakeLine(line)) return false;
  }
  return !lines_.Failed();
}

/// Takes one line; false when the reader gives up.
bool FlatReader::TakeLine(const VcdLine& line) {
  const LineKind kind = line.Kind();
  if (kind == LineKind::Timescale) {
    state_ = State::Timescale;
    return true;
  }
  if (SwitchRecording(kind)) return true;
  switch (state_) {
    case State::Searching:
      return TakeHeaderLine(line, kind);
    case State::Timescale:
      return TakeTimescaleLine(line);
    case State::TopModule:
      return TakeTopModuleLine(line, kind);
    case State::Body:
      lines_.TakeBodyLine(line, kind);
      return true;
  }
  return true;
}

bool FlatReader::TakeHeaderLine(const VcdLine& line, LineKind kind) {
  if (kind == LineKind::EndDefinitions) {
    state_ = State::Body;
    return !topMod.GetName().empty();
  }
  if (IsModuleScope(line, kind) && topModName != nullptr && line.Is(2, topModName)) {
    topMod.SetName(topModName);
    isTopModNameEverMatched = 1;
    state_ = State::TopModule;
  }
  return true;
}

bool FlatReader::TakeTimescaleLine(const VcdLine& line) {
  timeScale = ReadTimescale(line.words, line.count);
  state_ = State::Searching;
  return timeScale != -1.0;
}

bool FlatReader::TakeTopModuleLine(const VcdLine& line, LineKind kind) {
  // A nested module ends the collection just as the scope's own end does: what the top module
  // declares behind its first sub-module is not taken.
  if (kind == LineKind::Upscope || IsModuleScope(line, kind)) {
    state_ = State::Searching;
    return topMod.GetSignalSize() > 0;
  }
  Declaration declaration;
  if (ReadDeclaration(line, declaration) && Selects(declaration.name)) {
    topMod.AddSignal(declaration.name, declaration.type, declaration.code, declaration.width);
    lines_.counts().Add(declaration.code);
  }
  return true;
}

/// Only names without a bit index or range are filtered.
bool FlatReader::Selects(const std::string& name) const {
  return rules_.selection == nullptr || name.find('[') != std::string::npos ||
         rules_.selection->contains(name) || flatSelection_.contains(name);
}

}  // namespace orsa::kesncd
