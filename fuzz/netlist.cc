// Netlists in JSON: what is read of any text is written out again pin by pin, or refused with a
// reason.
#include <sstream>

#include "activity/activity_run.h"
#include "export/netlist_pins.h"
#include "fuzz/target.h"
#include "tests/support/require.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

using namespace orsa::kesncd;

namespace {

/// A dump with the names that the seeds have.
const ActivityResult& Result() {
  static const ActivityResult kResult = [] {
    TextSource dump(
        "$timescale 1ns $end $scope module top $end $var wire 1 ! clk $end $var wire 4 # d [3:0] "
        "$end "
        "$scope module u $end $var wire 1 % q $end $upscope $end $upscope $end $enddefinitions "
        "$end\n"
        "#0 0! b0 # x% #10 1! b11 # 1% #20 0!\n#30\n",
        std::string::npos);
    return CountActivity(dump, {});
  }();
  return kResult;
}

std::size_t LinesWith(const std::string& text, std::string_view part) {
  std::size_t lines = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++lines;
  return lines;
}

}  // namespace

void CheckInput(std::string_view bytes) {
  try {
    constexpr std::size_t kPiece = 7;
    TextSource json(std::string(bytes), kPiece);
    const Netlist netlist = ReadNetlist(json, "n");
    const NetlistPins pins(netlist, Result(), {});
    std::ostringstream unreached;
    WriteUnreached(pins, unreached);
    std::uint64_t seen = 0;
    pins.ForEachPin([&](const CellPin& pin) {
      ++seen;
      if (!pin.figures) return;
      const BitFigures& f = *pin.figures;
      support::Require(f.t0 + f.t1 + f.tx + f.tz == Result().observedTicks, "times add up");
    });
    support::Require(seen == pins.pins() && pins.reached() <= seen, "every pin is counted once");
    std::ostringstream saif;
    SaifOptions options;
    options.root = "top";
    const SaifReport report = WritePinSaif(pins, Result(), options, saif, nullptr);
    support::Require(report.nets + report.unwritten == pins.reached(), "no pin is lost");
    support::Require(LinesWith(saif.str(), " (T0 ") == report.nets, "a net for every pin");
  } catch (const Failure&) {
    return;
  }
}
