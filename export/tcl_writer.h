// Exact activity as commands of a timing tool's Tcl: what a power estimator is told pin by pin.
// Unlike SAIF it can carry every name.
//
//   # kesncd 1.0: exact activity of a simulation.
//   # -activity is toggles per 1ns; -duty is the share of time at 1.
//   set_power_activity -pins [get_pins {
//     soc/fifo/q[3]
//     soc/fifo/q[2]
//   }] -activity 0.1 -duty 0.5
#ifndef KESNCD_EXPORT_TCL_WRITER_H_
#define KESNCD_EXPORT_TCL_WRITER_H_

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "activity/activity_result.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// What activities are relative to. Defaults count toggles in 1 ns and scale nothing.
struct TclRates {
  std::string version;               // of the program
  std::uint64_t period = 1'000'000;  // femtoseconds: toggles in this time are counted
  std::string periodText = "1ns";    // the same for the reader
  std::string clock;                 // whose period it is; empty where it is a unit of time
  // Times are multiplied by the quotient of these: by how much the design's clock is slower.
  std::uint64_t scaleNumerator = 1;
  std::uint64_t scaleDenominator = 1;
};

/// A name as an element of a list in braces. A backslash goes before braces, backslashes and a
/// quote that begins the name; "{}" is the empty one. Brackets and dollars mean nothing inside
/// braces.
std::string TclElement(std::string_view name);

/// Gathers pins and writes one command for all of equal figures. Calling order: construct, Add as
/// often as there are pins, Write. A pin costs 32 bytes until then; its name, which would take a
/// hundred more, is asked for when it is written.
class TclActivity {
 public:
  /// Throws Failure with Unusable where no rate can be said: nothing observed, or no time scale.
  /// Nothing is written yet.
  TclActivity(const ActivityResult& result, const TclRates& rates);

  /// `pin` is any number by which Write asks for the path. Figures are copied as far as they
  /// matter: toggles, time at 1 and observed time.
  void Add(const BitFigures& figures, std::uint64_t pin) {
    pins_.push_back(
        {figures.tc, figures.t1, figures.t0 + figures.t1 + figures.tx + figures.tz, pin});
  }
  /// The busiest pins come first; equal ones in the order in which they were added. `appendPath` is
  /// called once for each pin, in the order of the file.
  void Write(std::ostream& out,
             const std::function<void(std::uint64_t pin, std::string& path)>& appendPath);

 private:
  // Equal in the first three: one command.
  struct Pin {
    std::uint64_t toggles;
    std::uint64_t ticksAtOne;
    std::uint64_t observed;  // ticks: of merged runs some may lack a pin
    std::uint64_t pin;
  };

  /// How many periods a pin was observed.
  double PeriodsOf(const Pin& pin) const;

  const TclRates rates_;
  double femtoseconds_ = 0;  // that a tick is
  std::vector<Pin> pins_;
};

/// See SaifOptions, which chooses in the same way.
struct TclOptions {
  TclRates rates;
  std::uint32_t scope = Declarations::kDump;  // only what is in it and below; kDump for all
  bool stripsWay = false;                     // paths begin in that scope, not at the top
  std::vector<bool> kept;  // by variableId, whether it is written at all; empty for every one
};

/// Writes the bits of a dump as pins. Throws Failure as TclActivity does, and with NothingMatched
/// where there is no bit to write. Paths are scopes and name with slashes, without the backslash of
/// an escaped name.
void WriteTcl(const ActivityResult& result, const TclOptions& options, std::ostream& out);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_TCL_WRITER_H_
