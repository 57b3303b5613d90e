// What a dump declares, for messages and for selections: a quick look at its header.
#ifndef KESNCD_CLI_DUMP_HEADER_H_
#define KESNCD_CLI_DUMP_HEADER_H_

#include <set>
#include <string>
#include <vector>

namespace kesncd_cli {

struct DumpHeader {
  std::vector<std::string> modules;  // paths of the module scopes: "tb", "tb/dut", ...
  std::set<std::string> names;       // of all variables, without ranges
};

/// Reads up to the end of the definitions. Empty for what cannot be opened.
DumpHeader ReadDumpHeader(const std::string& path);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_DUMP_HEADER_H_
