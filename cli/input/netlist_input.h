// Netlists that are read besides a dump, to carry its figures to the pins of cells.
//
// Two forms are taken. Either the JSON that `yosys write_json` makes:
//
//   {"modules": {"soc": {"ports": {...}, "cells": {...}, "netnames": {...}}}}
//
// or Verilog of gates, from which yosys is asked to make that JSON.
#ifndef KESNCD_CLI_INPUT_NETLIST_INPUT_H_
#define KESNCD_CLI_INPUT_NETLIST_INPUT_H_

#include <string>

#include "export/netlist.h"

namespace orsa::kesncd::cli {

/// Reads a netlist as lists are read: from a file, packed, from a pipe or from standard input. It
/// is JSON where it begins with a brace, else Verilog, for which `yosys` is run. Throws Failure
/// with Unusable, also for a netlist without modules. `path` as of a dump: "-" is standard input.
/// The netlist owns all that it holds.
Netlist ReadNetlistOf(const std::string& path);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_NETLIST_INPUT_H_
