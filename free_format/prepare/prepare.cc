// The way of a dump into its rewrite: header, then the body item by item.
#include "free_format/prepare/prepare.h"

#include <algorithm>

#include "free_format/body_reader.h"
#include "free_format/body_window.h"
#include "free_format/declaration_reader.h"
#include "free_format/dump_items.h"
#include "free_format/prepare/dump_writer.h"
#include "free_format/remarks.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

// The longest text of a vector or real value. Only that it is a value counts, so the high bits of
// longer ones are left out: with them the line would not arrive in one piece at every reader. It
// fits the unfiltered reader's line with its letter, a blank and its code.
constexpr std::size_t kLongestValue = 960;

/// Writes the body, or a window of it: the inner taker of a BodyWindow, where it is said when each
/// operation is called.
class BodyCopy {
 public:
  BodyCopy(DumpWriter& writer, PrepareReport& report, const DumpItems& items)
      : writer_(writer), report_(report), items_(items) {}

  /// Keeps values from before the window; without this call there is none before. One text for each
  /// code; without a window they would cost memory for nothing.
  void HoldValues(std::size_t codes) { values_.resize(codes); }

  void Scalar(std::uint32_t codeId, char value) {
    // A signal changes once, however many names and so lines it has.
    ++report_.changes;
    // The characters x and z lie above 1.
    if (isDumping_ && value > '1') ++report_.unknown;
    writer_.WriteScalar(value, codeId);
  }
  void Vector(std::uint32_t codeId, std::string_view value) { Write(codeId, BitText(value)); }
  void Real(std::uint32_t codeId, std::string_view value) { Write(codeId, RealText(value)); }
  void Command(Keyword command) {
    isDumping_ = command != Keyword::DumpOff;
    writer_.WriteCommand(command);
  }
  void SectionEnd() { writer_.EndSection(); }
  void Stamp(std::uint64_t ticks) {
    writer_.WriteStamp(ticks);
    ++report_.stamps;
  }

  // Later values replace it until the window begins.
  void RememberScalar(std::uint32_t codeId, char value) { values_[codeId].assign(1, value); }
  void RememberVector(std::uint32_t codeId, std::string_view value) {
    values_[codeId] = BitText(value);
  }
  void RememberReal(std::uint32_t codeId, std::string_view value) {
    values_[codeId] = RealText(value);
  }

  /// Writes the values that signals have when the window begins, as a section of a dump command at
  /// the window's first tick. What was dumped while dumping was off is not counted in the window
  /// either.
  void Open(std::uint64_t ticks, bool isDumping) {
    isDumping_ = isDumping;
    Stamp(ticks);
    // $dumpoff: nothing that follows counts, up to the next command.
    writer_.WriteCommand(isDumping ? Keyword::DumpVars : Keyword::DumpOff);
    for (std::uint32_t codeId = 0; codeId < values_.size(); ++codeId) {
      const std::string& value = values_[codeId];
      // One character is a scalar's; others have their letter in front.
      if (value.size() == 1) {
        writer_.WriteScalar(value[0], codeId);
      } else if (!value.empty()) {
        writer_.WriteVector(value, codeId);
      }
    }
    writer_.EndSection();
    // Not needed any more, and large in a dump with many signals.
    values_ = {};
  }

 private:
  /// "b01x0", of a long value its low bits. The text is valid until the next value.
  const std::string& BitText(std::string_view value) {
    value = Fitting(value);
    text_.resize(value.size() + 1);
    text_[0] = 'b';
    Translate(value, text_.data() + 1, kBitValues);
    return text_;
  }
  // Real numbers that are cut stay values, which is all that counts.
  const std::string& RealText(std::string_view value) { return (text_ = 'r') += Fitting(value); }
  std::string_view Fitting(std::string_view value) {
    if (value.size() <= kLongestValue) return value;
    report_.cut.Add(items_.Line(), "");
    return value.substr(value.size() - kLongestValue);
  }
  // A real's line has the shape of a vector's.
  void Write(std::uint32_t codeId, const std::string& text) {
    ++report_.changes;
    writer_.WriteVector(text, codeId);
  }

  DumpWriter& writer_;
  PrepareReport& report_;
  const DumpItems& items_;
  bool isDumping_ = true;
  // Holds the value that is written.
  std::string text_;
  std::vector<std::string> values_;  // by code, while the window is not open yet
};

/// Moves a scope, and those around it, in front of their neighbours, so that readers that look for
/// the first scope find the chosen one.
void MoveToFront(Declarations& declarations, std::uint32_t scope) {
  while (scope != Declarations::kDump) {
    const std::uint32_t parent = declarations.scopes[scope].parent;
    auto& scopes = declarations.scopes[parent].scopes;
    const auto place = std::find(scopes.begin(), scopes.end(), scope);
    std::rotate(scopes.begin(), place, place + 1);
    scope = parent;
  }
}

/// What a user chose decides the order, before anything is written.
Declarations ReadHeader(DumpWords& words, const PrepareOptions& options) {
  Declarations declarations = ReadDeclarations(words, options.dump);
  if (options.chooseTop) MoveToFront(declarations, options.chooseTop(declarations));
  return declarations;
}

/// Copies the body; false when nothing lies in the window. Everything that is known of the body
/// goes into `report`.
bool CopyBody(DumpItems& items, DumpWriter& writer, const Declarations& declarations,
              const TickWindow& window, PrepareReport& report) {
  BodyCopy copy(writer, report, items);
  if (window.begin) copy.HoldValues(declarations.codes.size());
  BodyWindow<BodyCopy> body(window, copy);
  ReadBody(items, body);
  body.Finish();
  // The window's end may lie in a section.
  writer.EndSection();
  report.firstTick = body.time().first;
  report.lastTick = body.time().last;
  report.isEndCut = body.time().isEndCut;
  report.unread = ReadingRemarks(declarations, items.tallies());
  report.weak = items.tallies().weak;
  return body.time().isOpen;
}

}  // namespace

TickWindow WindowInTicks(const TimeWindow& window, std::optional<std::uint64_t> tick,
                         const std::string& name) {
  // A window that is bounded at neither side needs no time scale.
  if (!window.begin && !window.end) return {};
  if (!tick) {
    throw Failure(FailureKind::Unusable,
                  name +
                      ": has no time scale, which a window needs; kesncd prepare "
                      "--timescale gives one");
  }
  TickWindow ticks;
  // BEGIN between two ticks: the later one is the first inside.
  if (window.begin) ticks.begin = *window.begin / *tick + (*window.begin % *tick != 0 ? 1 : 0);
  if (window.end) ticks.end = *window.end / *tick;
  return ticks;
}

PrepareReport PrepareDump(ByteSource& in, ByteSink& out, const PrepareOptions& options) {
  DumpWords words(in, options.block, options.block / 4);
  const Declarations declarations = ReadHeader(words, options);
  PrepareReport report;
  // A time scale of the dump's own is the true one.
  report.tick = declarations.tick ? declarations.tick : options.tick;
  report.timescale = declarations.timescale;
  report.tickNotNeeded = declarations.tick && options.tick && declarations.tick != options.tick;
  report.unnamed = declarations.unnamed;
  report.addedRoot = AddedRootOf(declarations);
  const TickWindow window = WindowInTicks(options.window, report.tick, options.dump);
  DumpItems items(words, declarations);
  DumpWriter writer(out, declarations, options.block);
  writer.WriteHeader(report.tick);
  // Names are replaced and left out while the header is written.
  report.renamed = writer.renamed();
  report.leftOut = writer.leftOut();
  if (!CopyBody(items, writer, declarations, window, report)) {
    throw Failure(FailureKind::NothingMatched, options.dump + ": nothing lies in the window");
  }
  writer.Flush();
  return report;
}

}  // namespace orsa::kesncd
