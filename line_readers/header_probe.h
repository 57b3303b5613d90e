// Proposes a top module from a dump's header.
#ifndef KESNCD_LINE_READERS_HEADER_PROBE_H_
#define KESNCD_LINE_READERS_HEADER_PROBE_H_

#include <cstdio>
#include <string>

namespace orsa::kesncd {

/// The innermost module of the first unbroken run of module scopes: the one whose scope directly
/// encloses the first declaration. Empty when there is none. "tb", then "dut", then a declaration:
/// "dut". The stream is left after the line that ended the run.
std::string ProbeTopModule(std::FILE* dump);

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_HEADER_PROBE_H_
