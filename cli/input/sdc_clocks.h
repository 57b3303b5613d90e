// The clocks of a design's timing constraints, to hold a dump's clocks against.
//
// Constraints are Tcl. Of a file such as
//
//   set_units -time ps
//   create_clock -name core -period 2000 [get_ports clk]
//   create_clock -period 10000 {clk_a clk_b}
//
// this reads the clocks core on clk with 2 ns, clk_a and clk_b with 10 ns. Nothing is executed:
// variables, loops and `source` are not followed, so a clock whose period is computed is not seen.
#ifndef KESNCD_CLI_INPUT_SDC_CLOCKS_H_
#define KESNCD_CLI_INPUT_SDC_CLOCKS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vcd/tally.h"

namespace orsa::kesncd::cli {

/// A clock and its period in the design.
struct DesignClock {
  std::string name;          // what -name says, else the signal
  std::string signal;        // what carries it: a port's name, mostly its own
  std::uint64_t period = 0;  // femtoseconds
  std::string periodText;    // for messages: "2ns"
  // Created without a signal, for constraints of inputs and outputs: no dump need have it.
  bool isVirtual = false;
};

/// What the create_clock commands of a text say.
struct SdcClocks {
  std::vector<DesignClock> clocks;  // in the file's order, one for each object that carries it
  bool endsOpen = false;            // the text ends inside a brace, bracket or quote
  Tally unread;                     // commands whose period is no number, but a variable say
  Tally nested;                     // other commands with clocks in them, such as "if"
  Tally units;                      // of time that are none
};

/// Reads a whole file. Periods are in nanoseconds unless set_units says otherwise. Never throws for
/// what it does not understand: other commands of the constraints are none of its business.
SdcClocks ReadSdcClocks(std::string_view text);
/// The clocks of a constraints file; says how many of them could not be read. Throws as ReadText.
std::vector<DesignClock> SdcClocksOf(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_SDC_CLOCKS_H_
