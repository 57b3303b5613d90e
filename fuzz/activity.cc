// Exact activity against an account kept straight from the definitions. The options are the begin
// and end of a window.
#include <algorithm>

#include "activity/activity_run.h"
#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "fuzz/target.h"
#include "tests/support/input.h"
#include "tests/support/plain_activity.h"
#include "tests/support/require.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/bit_names.h"
#include "vcd/time_text.h"
#include "vcd/value_alphabet.h"

using namespace orsa::kesncd;

namespace {

constexpr std::size_t kSmallBlock = 64;
constexpr std::size_t kMostWork = 100'000;  // bits times events, or the account takes too long

/// Keeps what a body says.
struct EventList {
  void Scalar(std::uint32_t codeId, char value) {
    events.push_back({support::Event::Value, codeId, std::string(1, value), 0});
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    std::string bits;
    for (const char c : value) bits += In(kBitValues, c);
    events.push_back({support::Event::Value, codeId, bits, 0});
  }
  void Real(std::uint32_t /*codeId*/, std::string_view /*value*/) {}
  void Stamp(std::uint64_t ticks) { events.push_back({support::Event::Stamp, 0, "", ticks}); }
  void Command(Keyword command) {
    if (command == Keyword::DumpOff) events.push_back({support::Event::Off, 0, "", 0});
    if (command == Keyword::DumpOn) events.push_back({support::Event::On, 0, "", 0});
  }
  void SectionEnd() {}
  bool IsDone() const { return false; }

  std::vector<support::Event> events;
};

/// Whether a stamp is too long for a small block to keep it whole: of "#000...01" without its
/// middle nobody can say what number it is, so that it is none there.
bool HasLongStamp(const std::string& dump) {
  const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  for (auto at = dump.begin(); at != dump.end();) {
    const auto end = std::find_if(at, dump.end(), isBlank);
    if (end - at > std::ptrdiff_t{kSmallBlock / 4} && *at == '#') return true;
    at = std::find_if_not(end, dump.end(), isBlank);
  }
  return false;
}

std::vector<std::uint32_t> WidthsOf(const Declarations& declarations) {
  std::vector<std::uint32_t> widths(declarations.codes.size());
  for (const DumpVariable& variable : declarations.variables) {
    if (!TypeHasBits(declarations.TypeOf(variable))) continue;
    widths[variable.codeId] = std::max(widths[variable.codeId], variable.width);
  }
  return widths;
}

void Compare(const ActivityResult& result, const LargeArray<BitFigures>& plain) {
  support::Require(result.bits.size() == plain.size(), "as many bits");
  for (std::size_t bit = 0; bit < plain.size(); ++bit) {
    const BitFigures& one = result.bits[bit];
    const BitFigures& other = plain[bit];
    support::Require(one == other, [&] {
      const auto text = [](const BitFigures& f) {
        return std::to_string(f.t0) + " " + std::to_string(f.t1) + " " + std::to_string(f.tx) +
               " " + std::to_string(f.tz) + " " + std::to_string(f.tc) + " " + std::to_string(f.ig);
      };
      return "bit " + std::to_string(bit) + ": " + text(one) + " is not " + text(other);
    });
    support::Require(one.t0 + one.t1 + one.tx + one.tz == result.observedTicks,
                     "the times of a bit add up to the observed time");
  }
}

}  // namespace

void CheckInput(std::string_view bytes) {
  const support::Input input(bytes);
  ActivityOptions options;
  options.window.begin = Femtoseconds(input.Option(0));
  options.window.end = Femtoseconds(input.Option(1));
  options.mostBits = kMostWork;
  EventList list;
  std::vector<std::uint32_t> widths;
  try {
    TextSource source(input.text, std::string::npos);
    DumpWords words(source);
    const Declarations declarations = ReadDeclarations(words, "");
    widths = WidthsOf(declarations);
    DumpItems items(words, declarations);
    ReadBody(items, list);
    std::size_t bits = 0;
    for (const std::uint32_t width : widths) bits += width;
    if (bits * (list.events.size() + 1) > kMostWork) return;
    for (const std::size_t block : {kSmallBlock, DumpWords::kBlock}) {
      if (block == kSmallBlock && HasLongStamp(input.text)) continue;
      options.block = block;
      TextSource again(input.text, std::string::npos);
      const ActivityResult result = CountActivity(again, options);
      const TickWindow ticks = WindowInTicks(options.window, result.tick, "");
      const ActivityWindow window{ticks.begin.value_or(0), ticks.end.value_or(UINT64_MAX)};
      Compare(result, support::PlainFigures(list.events, widths, window));
    }
  } catch (const Failure&) {
    return;  // no dump, or an empty window
  }
}
