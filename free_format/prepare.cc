#include "free_format/prepare.h"

#include <algorithm>

#include "free_format/declaration_reader.h"
#include "free_format/dump_writer.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

/// Copies the body, or a window of it.
class BodyCopy {
 public:
  BodyCopy(DumpItems& items, DumpWriter& writer, PrepareReport& report)
      : items_(items), writer_(writer), report_(report) {}

  /// Keeps only what happens between two ticks. The value that each signal has when the window
  /// opens becomes its initial value there.
  void SetWindow(std::uint64_t begin, std::uint64_t end, std::size_t codes) {
    end_ = end;
    begin_ = begin;
    isOpen_ = begin == 0;
    if (!isOpen_) values_.resize(codes);
  }

  /// False when nothing lies in the window.
  bool Run() {
    bool more = true;
    while (more && items_.Next()) {
      if (items_.kind() == ItemKind::Stamp) {
        more = TakeStamp(items_.ticks());
      } else if (isOpen_) {
        Write();
      } else {
        Remember();
      }
    }
    writer_.EndSection();
    return isOpen_;
  }

 private:
  void Write() {
    switch (items_.kind()) {
      case ItemKind::Scalar:
        ++report_.changes;
        report_.unknown += isDumping_ && items_.value() > '1' ? 1U : 0U;
        writer_.WriteScalar(items_.value(), items_.code());
        break;
      case ItemKind::Vector:
        ++report_.changes;
        writer_.WriteVector(items_.text(), items_.code());
        break;
      case ItemKind::Command:
        isDumping_ = items_.command() != Keyword::DumpOff;
        writer_.WriteCommand(items_.command());
        break;
      case ItemKind::SectionEnd:
        writer_.EndSection();
        break;
      case ItemKind::Stamp:
        break;
    }
  }

  void Remember() {
    switch (items_.kind()) {
      case ItemKind::Scalar:
        values_[items_.code()].assign(1, items_.value());
        break;
      case ItemKind::Vector:
        values_[items_.code()] = items_.text();
        break;
      case ItemKind::Command:
        isDumping_ = items_.command() != Keyword::DumpOff;
        break;
      case ItemKind::SectionEnd:
      case ItemKind::Stamp:
        break;
    }
  }

  /// False behind the window.
  bool TakeStamp(std::uint64_t ticks) {
    if (seen_ && ticks < last_) ++report_.backward;
    if (!seen_ && ticks > end_) {
      isOpen_ = false;
      return false;
    }
    if (!isOpen_ && ticks >= begin_) Open(seen_ ? begin_ : ticks);
    seen_ = true;
    last_ = ticks;
    if (!isOpen_) return true;
    const std::uint64_t written = std::min(ticks, end_);
    if (report_.stamps == 0 || written != report_.lastTick) WriteStamp(written);
    return ticks <= end_;
  }

  void Open(std::uint64_t ticks) {
    isOpen_ = true;
    WriteStamp(ticks);
    // What was dumped while dumping was off is not counted in the window either.
    writer_.WriteCommand(isDumping_ ? Keyword::DumpVars : Keyword::DumpOff);
    for (std::uint32_t code = 0; code < values_.size(); ++code) {
      const std::string& value = values_[code];
      if (value.size() == 1) {
        writer_.WriteScalar(value[0], code);
      } else if (!value.empty()) {
        writer_.WriteVector(value, code);
      }
    }
    writer_.EndSection();
    values_ = {};
  }

  void WriteStamp(std::uint64_t ticks) {
    writer_.WriteStamp(ticks);
    if (report_.stamps++ == 0) report_.firstTick = ticks;
    report_.lastTick = ticks;
  }

  DumpItems& items_;
  DumpWriter& writer_;
  PrepareReport& report_;
  std::uint64_t begin_ = 0;
  std::uint64_t end_ = UINT64_MAX;
  bool isOpen_ = true;
  bool isDumping_ = true;
  bool seen_ = false;                // a stamp
  std::uint64_t last_ = 0;           // the last one
  std::vector<std::string> values_;  // by code, while the window is not open yet
};

/// The scope of that path, or the outermost of that name; kDump when there is none.
std::uint32_t FindScope(const Declarations& declarations, const std::string& top) {
  std::vector<std::uint32_t> level = declarations.scopes[Declarations::kDump].scopes;
  while (!level.empty()) {
    std::vector<std::uint32_t> below;
    for (const std::uint32_t index : level) {
      const DumpScope& scope = declarations.scopes[index];
      if (scope.name == top || declarations.PathOf(index) == top) return index;
      below.insert(below.end(), scope.scopes.begin(), scope.scopes.end());
    }
    level = std::move(below);
  }
  return Declarations::kDump;
}

/// Moves a scope, and those around it, in front of their neighbours.
void MoveToFront(Declarations& declarations, std::uint32_t scope) {
  while (scope != Declarations::kDump) {
    const std::uint32_t parent = declarations.scopes[scope].parent;
    auto& scopes = declarations.scopes[parent].scopes;
    const auto place = std::find(scopes.begin(), scopes.end(), scope);
    std::rotate(scopes.begin(), place, place + 1);
    scope = parent;
  }
}

Declarations ReadHeader(DumpWords& words, const PrepareOptions& options) {
  Declarations declarations = ReadDeclarations(words, options.dump);
  if (options.top.empty()) return declarations;
  const std::uint32_t top = FindScope(declarations, options.top);
  if (top == Declarations::kDump) {
    throw Failure(FailureKind::NothingMatched, options.dump + ": has no scope " + options.top);
  }
  MoveToFront(declarations, top);
  return declarations;
}

void SetWindow(BodyCopy& copy, const PrepareOptions& options, const PrepareReport& report,
               std::size_t codes) {
  if (!options.begin && !options.end) return;
  if (!report.tick) {
    throw Failure(
        FailureKind::Unusable,
        options.dump + ": has no time scale, which a window needs; --timescale gives one");
  }
  // The first and the last tick that lie in the window.
  const std::uint64_t begin = options.begin.value_or(0);
  copy.SetWindow(begin / *report.tick + (begin % *report.tick != 0 ? 1 : 0),
                 options.end ? *options.end / *report.tick : UINT64_MAX, codes);
}

}  // namespace

PrepareReport PrepareDump(ByteSource& in, ByteSink& out, const PrepareOptions& options) {
  DumpWords words(in);
  const Declarations declarations = ReadHeader(words, options);
  PrepareReport report;
  report.tick = declarations.tick ? declarations.tick : options.tick;
  report.timescale = declarations.timescale;
  report.tickNotNeeded = declarations.tick && options.tick && declarations.tick != options.tick;
  report.isTorn = !declarations.ended && !declarations.hasWord;
  report.malformed = declarations.malformed;
  report.unbalanced = declarations.unbalanced;
  report.renamed = declarations.renamed;
  report.addedRoot = AddedRootOf(declarations);
  DumpItems items(words, declarations);
  DumpWriter writer(out, declarations);
  BodyCopy copy(items, writer, report);
  SetWindow(copy, options, report, declarations.codes.size());
  writer.WriteHeader(report.tick);
  const bool isAnything = copy.Run();
  report.items = items.tallies();
  if (!isAnything) {
    throw Failure(FailureKind::NothingMatched, options.dump + ": nothing lies in the window");
  }
  writer.Flush();
  return report;
}

}  // namespace orsa::kesncd
