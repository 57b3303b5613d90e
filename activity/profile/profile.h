// When it switched: toggles of modules by windows of time, as a value that can be written, stored
// and drawn.
#ifndef KESNCD_ACTIVITY_PROFILE_PROFILE_H_
#define KESNCD_ACTIVITY_PROFILE_PROFILE_H_

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "activity/activity_result.h"
#include "activity/profile/module_shares.h"

namespace orsa::kesncd {

/// Sums by module and window. A toggle at an edge belongs to the window that ends there, so a row's
/// toggles are those of `kesncd activity` between its edges, and rows add up to the whole.
struct Profile {
  std::vector<std::uint64_t> edges;     // ticks, one more than windows; empty without stamps
  std::vector<std::uint64_t> observed;  // by window: its ticks less those without observation
  ModuleTree modules;
  /// By module, then by window; nothing for a module that never toggled.
  std::vector<std::vector<std::uint64_t>> toggles;
  /// Begin and end of stretches without observation, unless they are too many to be worth knowing.
  std::vector<std::pair<std::uint64_t, std::uint64_t>> gaps;
  /// The windows are longer than equal parts of the span would be: it was not known in time.
  bool isFolded = false;

  std::size_t windows() const { return edges.empty() ? 0 : edges.size() - 1; }
  std::uint64_t TogglesOf(std::size_t module, std::size_t window) const {
    return toggles[module].empty() ? 0 : toggles[module][window];
  }
};

/// Figures by the values of a signal: in a state, while a flag is set. A toggle in the step in
/// which the signal changes belongs to the value that it leaves, as in windows that end there.
struct ValueSplit {
  struct Part {
    std::string value;           // 0, 1, x and z, as many as the signal has bits; empty for others
    std::uint64_t observed = 0;  // ticks
    std::vector<std::uint64_t> toggles;  // by module
  };
  std::vector<Part> parts;   // by value; what was put together comes last
  std::uint64_t others = 0;  // values that were put together; more than were counted one by one
                             // count as one
  ModuleTree modules;
};

/// The busiest stretch of a length.
struct Peak {
  std::uint64_t begin = 0;  // ticks
  std::uint64_t end = 0;
  std::uint64_t toggles = 0;  // after begin, up to and with end
  std::uint64_t grain = 1;    // ticks to which the search was exact
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_PROFILE_H_
