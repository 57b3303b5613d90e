// Verilog netlists, by the tool that reads Verilog.
//
// It runs `yosys -q -f verilog -b json -o /dev/stdout -p "hierarchy -auto-top" FILE` and reads what
// it writes as netlist.h says. Nothing is stored on a disk.
#ifndef KESNCD_EXPORT_YOSYS_H_
#define KESNCD_EXPORT_YOSYS_H_

#include <string>

#include "export/netlist.h"

namespace orsa::kesncd {

/// Reads a Verilog file by `yosys`, which is found on the PATH. Modules that the file does not
/// define are cells. Messages call the file `name`.
///
/// Throws Failure with Unusable for what cannot be read, or where yosys is not installed or fails;
/// what yosys says of the file is on standard error by then. `path` is opened by the child process,
/// so it must be one that another process can open: a file, or TextByPath::PathForOthers.
Netlist ReadVerilog(const std::string& path, const std::string& name);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_YOSYS_H_
