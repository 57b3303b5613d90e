// Netlists that are read besides a dump, to carry its figures to the pins of cells.
#ifndef KESNCD_CLI_INPUT_NETLIST_INPUT_H_
#define KESNCD_CLI_INPUT_NETLIST_INPUT_H_

#include <string>

#include "export/netlist.h"

namespace orsa::kesncd::cli {

/// Reads a netlist as lists are read: from a file, packed, from a pipe or from standard input. It
/// is JSON where it begins with a brace, else Verilog, for which `yosys` is run. Throws Failure
/// with Unusable, also for a netlist without modules.
Netlist ReadNetlistOf(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_NETLIST_INPUT_H_
