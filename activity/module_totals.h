// Sums of the hosts' figures over modules: of each scope by itself, and of it with all scopes
// below. A code counts once in each sum, however many names it has there; means weigh every code
// alike.
#ifndef KESNCD_ACTIVITY_MODULE_TOTALS_H_
#define KESNCD_ACTIVITY_MODULE_TOTALS_H_

#include <cstdint>
#include <vector>

#include "activity/host_run.h"

namespace orsa::kesncd {

struct ModuleTotal {
  std::uint64_t signals = 0;  // codes
  std::uint64_t changes = 0;
  std::uint64_t counted = 0;  // of the changes: all but each signal's first, its initial value
  std::uint32_t most = 0;     // the most changes of one signal
};

struct ModuleTotals {
  std::vector<ModuleTotal> own;   // by scope
  std::vector<ModuleTotal> tree;  // with all below
};

ModuleTotals SumModules(const HostRun& run);

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_MODULE_TOTALS_H_
