// Bit by bit through the steps of each observed stretch.
#include "tests/support/plain_activity.h"

#include <algorithm>
#include <map>

namespace support {

using orsa::kesncd::ActivityWindow;
using orsa::kesncd::BitFigures;
using orsa::kesncd::LargeArray;

namespace {

/// Observed without a break: a list of steps, each the last value of every code.
struct Stretch {
  std::uint64_t begin, end;
  std::map<std::uint64_t, std::map<std::uint32_t, std::string>> steps;
};

std::vector<Stretch> StretchesOf(const std::vector<Event>& events) {
  const auto first = std::find_if(events.begin(), events.end(),
                                  [](const Event& e) { return e.kind == Event::Stamp; });
  if (first == events.end()) return {};
  std::uint64_t now = first->ticks;
  std::vector<Stretch> stretches{{now, now, {}}};
  bool isObserving = true;
  for (const Event& event : events) {
    if (event.kind == Event::Stamp) now = std::max(now, event.ticks);
    if (event.kind == Event::On && !isObserving) stretches.push_back({now, now, {}});
    if (event.kind == Event::Off) isObserving = false;
    if (event.kind == Event::On) isObserving = true;
    if (isObserving || event.kind == Event::Off) {
      Stretch& open = stretches.back();
      if (isObserving) open.end = now;
      if (event.kind == Event::Value) open.steps[now][event.codeId] = event.value;
    }
  }
  return stretches;
}

char BitOf(const std::string& value, std::size_t bit) {
  if (bit < value.size()) return value[value.size() - 1 - bit];
  return value[0] == '0' || value[0] == '1' ? '0' : value[0];
}

BitFigures PlainFigures(const std::vector<Stretch>& stretches, std::uint32_t codeId,
                        std::size_t bit, const ActivityWindow& window) {
  std::map<char, std::uint64_t> time;
  BitFigures figures;
  for (const Stretch& stretch : stretches) {
    char level = 'x', known = 0;
    std::uint64_t since = stretch.begin;
    bool isTouched = false;
    for (const auto& [ticks, values] : stretch.steps) {
      const auto value = values.find(codeId);
      if (value == values.end()) continue;
      time[level] += window.Clamp(ticks) - window.Clamp(since);
      since = ticks;
      level = BitOf(value->second, bit);
      if (level == 'x') isTouched = true;
      if (level == 'x' || level == 'z') continue;
      if (known != 0 && window.Counts(ticks)) {
        figures.tc += known != level;
        figures.ig += known == level && isTouched;
      }
      known = level;
      isTouched = false;
    }
    time[level] += window.Clamp(stretch.end) - window.Clamp(since);
  }
  figures.t0 = time['0'];
  figures.t1 = time['1'];
  figures.tx = time['x'];
  figures.tz = time['z'];
  return figures;
}

}  // namespace

LargeArray<BitFigures> PlainFigures(const std::vector<Event>& events,
                                    const std::vector<std::uint32_t>& widths,
                                    const ActivityWindow& window) {
  const std::vector<Stretch> stretches = StretchesOf(events);
  LargeArray<BitFigures> all;
  for (std::uint32_t codeId = 0; codeId < widths.size(); ++codeId) {
    for (std::uint32_t bit = 0; bit < widths[codeId]; ++bit) {
      all.push_back(PlainFigures(stretches, codeId, bit, window));
    }
  }
  return all;
}

}  // namespace support
