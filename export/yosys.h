// Verilog netlists, by the tool that reads Verilog.
#ifndef KESNCD_EXPORT_YOSYS_H_
#define KESNCD_EXPORT_YOSYS_H_

#include <string>

#include "export/netlist.h"

namespace orsa::kesncd {

/// Reads a netlist from a file: JSON where it begins with a brace, else Verilog, for which `yosys`
/// is run, found on the PATH. Modules that the file does not define are cells.
///
/// Throws Failure with Unusable for what cannot be read, or where yosys is needed and not installed
/// or fails; what yosys says of the file is on standard error by then.
Netlist ReadNetlistFile(const std::string& path);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_YOSYS_H_
