// The activity of bits, kept straight from the definitions: what the counting core is judged by. It
// is slow and has nothing in common with the core.
#ifndef KESNCD_TESTS_SUPPORT_PLAIN_ACTIVITY_H_
#define KESNCD_TESTS_SUPPORT_PLAIN_ACTIVITY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_window.h"

namespace support {

/// What a body says: a value of a code in 0, 1, x and z, a stamp, or a dump command.
struct Event {
  enum Kind { Value, Stamp, Off, On } kind;
  std::uint32_t codeId = 0;
  std::string value;
  std::uint64_t ticks = 0;
};

/// The figures of all bits of codes of those widths, code by code, the lowest bit first.
orsa::kesncd::LargeArray<orsa::kesncd::BitFigures> PlainFigures(
    const std::vector<Event>& events, const std::vector<std::uint32_t>& widths,
    const orsa::kesncd::ActivityWindow& window);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_PLAIN_ACTIVITY_H_
