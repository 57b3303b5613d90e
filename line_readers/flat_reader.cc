// The states of the flat readers and what each makes of a line.
#include "line_readers/flat_reader.h"

#include "line_readers/dump_rules.h"
#include "line_readers/timescale.h"
#include "text/words.h"

namespace orsa::kesncd {

namespace {

/// "$scope module NAME $end"; tasks and functions are none.
bool IsModuleScope(const VcdLine& line, LineKind kind) {
  return kind == LineKind::Scope && line.Is(1, "module");
}

}  // namespace

FlatRules UnfilteredRules() {
  // Lines of up to 1023 characters; stamps have slots of their own.
  return {.lineBytes = 1024, .selection = nullptr, .splitters = Splitters::Separate};
}

FlatRules FilteredRules(const std::set<std::string>& selection) {
  // Lines of up to 4095 characters. Words and stamps share their slots, so that a word's tail may
  // reach a stamp: hosts have always seen it.
  return {.lineBytes = 4096, .selection = &selection, .splitters = Splitters::Shared};
}

FlatReader::FlatReader(std::FILE* dump, const FlatRules& rules, const FlatTarget& target,
                       DeclarationSink& sink, CodeCounts& counts, ReadingState& state,
                       const ReadingOptions& options)
    : rules_(rules),
      target_(target),
      sink_(sink),
      lines_(dump, rules.lineBytes, rules.splitters, counts, state, options) {
  if (rules_.selection == nullptr) return;
  // "u1/q" takes a variable "u1_q" too, as a flattened design calls it.
  for (const std::string& name : *rules_.selection) flatSelection_.insert(SlashesFlattened(name));
}

bool FlatReader::Read() {
  VcdLine line{};
  while (lines_.Next(state_ == State::Body, line)) {
    if (!TakeLine(line)) return false;
  }
  return !lines_.Failed();
}

/// Takes one line; false when the reader gives up. The order matters: a lone keyword is one in
/// every state, before the state has its say.
bool FlatReader::TakeLine(const VcdLine& line) {
  const LineKind kind = line.Kind();
  if (kind == LineKind::Timescale) {
    // Also in the body. The line after it is the time scale, whatever it holds.
    state_ = State::Timescale;
    return true;
  }
  if (SwitchRecording(kind, lines_.state())) return true;
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
  // Only here does the body begin: the sink takes stock, and a dump without the top module is given
  // up.
  if (kind == LineKind::EndDefinitions) {
    state_ = State::Body;
    sink_.EndDefinitions();
    return target_.isNamed;
  }
  // Every scope of the name opens, also a second one, or one inside another module.
  if (IsModuleScope(line, kind) && target_.topModule != nullptr && line.Is(2, target_.topModule)) {
    sink_.OpenScope(target_.topModule);
    target_.isNamed = true;
    lines_.state().topMatched = 1;
    state_ = State::TopModule;
  }
  return true;
}

/// One line and back: what the header goes on with is searched for the top module again.
bool FlatReader::TakeTimescaleLine(const VcdLine& line) {
  double& nsPerTick = lines_.state().nsPerTick;
  nsPerTick = ReadTimescale(line.words, line.count, nsPerTick);
  state_ = State::Searching;
  // -1.0 is what ReadTimescale gives for a line that it does not understand.
  return nsPerTick != -1.0;
}

bool FlatReader::TakeTopModuleLine(const VcdLine& line, LineKind kind) {
  // A nested module ends the collection just as the scope's own end does: what the top module
  // declares after its first sub-module is not taken.
  if (kind == LineKind::Upscope || IsModuleScope(line, kind)) {
    state_ = State::Searching;
    sink_.CloseScope();
    // An empty top module is given up: a run for it would report nothing.
    return target_.hasSignals;
  }
  // All other lines of the module are passed over, among them scopes that are no module: their
  // variables count as the top module's.
  Declaration declaration;
  if (ReadDeclaration(line, declaration) && Selects(declaration.name)) {
    sink_.Declare(declaration);
    target_.hasSignals = true;
  }
  return true;
}

/// Only names without a bit index or range are filtered. Which bits of a variable with an index are
/// wanted is not asked here.
bool FlatReader::Selects(const std::string& name) const {
  return rules_.selection == nullptr || name.find('[') != std::string::npos ||
         rules_.selection->contains(name) || flatSelection_.contains(name);
}

}  // namespace orsa::kesncd
