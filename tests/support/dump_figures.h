// What the targets for `prepare` and `check` share: a dump's rewrite, and what readers count.
#ifndef KESNCD_TESTS_SUPPORT_DUMP_FIGURES_H_
#define KESNCD_TESTS_SUPPORT_DUMP_FIGURES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "free_format/prepare/prepare.h"

namespace support {

/// Bytes that are read at a time: short dumps meet the ends of blocks, and little memory is asked
/// for.
inline constexpr std::size_t kSmallBlock = 4200;

/// The prepared dump; nothing for one that is refused. `chunk` is what one read gives at most.
std::optional<std::string> Prepare(const std::string& dump,
                                   const orsa::kesncd::PrepareOptions& options = {},
                                   std::size_t chunk = std::string::npos);

/// Changes by scope path and name.
using Figures = std::map<std::pair<std::string, std::string>, std::int64_t>;

/// What the hierarchical reader makes of a dump, and the reader state that it leaves.
Figures TreeFigures(const std::string& dump);
/// What a dump says, item by item. A span without a stamp is -1 to -1.
struct PlainFigures {
  Figures figures;
  double first = -1.0;
  double last = -1.0;
};
PlainFigures ItemFigures(const std::string& dump);

std::string TextOf(const Figures& figures);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_DUMP_FIGURES_H_
