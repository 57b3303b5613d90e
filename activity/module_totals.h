// Sums of the hosts' figures over modules: of each scope by itself, and of it with all scopes
// below. A code counts once in each sum, however many names it has there; means weigh every code
// alike.
//
// An example: u1 and u2 in soc both have a port on the net clk, which has one code. Each of u1, u2
// and soc counts clk once in its own sum, and the tree of soc counts it once, not three times.
#ifndef KESNCD_ACTIVITY_MODULE_TOTALS_H_
#define KESNCD_ACTIVITY_MODULE_TOTALS_H_

#include <cstdint>
#include <vector>

#include "activity/host_run.h"

namespace orsa::kesncd {

/// Of one scope, or of one scope with all below it.
struct ModuleTotal {
  std::uint64_t signals = 0;  // identifier codes, however many names they have
  std::uint64_t changes = 0;  // of all of them together
  std::uint64_t counted = 0;  // of the changes: all but each signal's first, its initial value
  std::uint32_t most = 0;     // the most changes of one signal
};

/// Two lists, both by the scope's number in the declarations; number 0 is the whole dump.
struct ModuleTotals {
  std::vector<ModuleTotal> own;   // by scope
  std::vector<ModuleTotal> tree;  // with all below
};

/// Time and memory are in proportion to scopes and variables.
ModuleTotals SumModules(const HostRun& run);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_MODULE_TOTALS_H_
