// Rows of clocks, parts of values, and the search for a peak.
//
// A cut takes the counter's sums away and begins new ones. All three listeners rely on being told
// of a step when its toggles are in the sums and those of the next step are not.
#include "activity/profile/signal_cuts.h"

#include <algorithm>
#include <utility>

namespace orsa::kesncd {

namespace {

__extension__ using Wide = unsigned __int128;

// Values beyond this many are put together: a counter has no end of them.
constexpr std::size_t kMostParts = 4096;
// The bytes of its words, to look it up by: shorter than its text, and as exact.
std::string ValueKey(const std::vector<ValueWord>& value) {
  std::string key(value.size() * sizeof(ValueWord), '\0');
  std::copy_n(reinterpret_cast<const char*>(value.data()), key.size(), key.data());
  return key;
}

/// As a dump writes it, all bits: "01xz". The highest bit first. A ValueWord has x as unknown alone
/// and z as unknown and high.
std::string TextOf(const std::vector<ValueWord>& value, std::uint32_t width) {
  std::string text(width, '0');
  for (std::uint32_t bit = 0; bit < width; ++bit) {
    const ValueWord& word = value[bit / kWordBits];
    const auto level = (word.high >> bit % kWordBits & 1) | (word.unknown >> bit % kWordBits & 1)
                                                                << 1;
    text[width - 1 - bit] = "01xz"[level];
  }
  return text;
}

/// What a signal is before it has a value.
std::vector<ValueWord> AllUnknown(std::uint32_t width) {
  std::vector<ValueWord> value((width + kWordBits - 1) / kWordBits);
  ReadVectorValue("x", width, value.data());
  return value;
}

/// A part's sums have no memory until it has held for once.
void AddToggles(std::vector<std::uint64_t>& sums, const std::vector<std::uint64_t>& more) {
  if (sums.empty()) sums.resize(more.size());
  for (std::size_t at = 0; at < more.size(); ++at) sums[at] += more[at];
}

/// Ticks of the window that were observed up to the last stamp. Clamped to the window on both
/// sides, less pauses.
std::uint64_t ObservedSoFar(const ToggleCounter& toggles) {
  const CountedTime& time = toggles.time();
  if (!time.hasStamps) return 0;
  const std::uint64_t now = toggles.window().Clamp(time.lastStamp);
  return now - toggles.window().Clamp(time.firstStamp) - time.UnobservedUpTo(now);
}

}  // namespace

/// A rising edge is a known 1 after a known 0, with whatever between them.
void ClockRows::Value(const std::vector<ValueWord>& value) {
  // x or z: what was known stays known.
  if ((value.front().unknown & 1) != 0) return;
  const auto level = static_cast<unsigned>(value.front().high & 1);
  // The step's toggles belong to the row that ends with it.
  const std::uint64_t now = toggles_.time().lastStamp;
  if (known_ == 0 && level == 1 && toggles_.window().Counts(now)) Cut(now);
  known_ = level;
}

/// Room is asked for first: a clock of a long dump has more cycles than there is memory for.
void ClockRows::Cut(std::uint64_t ticks) {
  rows_.RequireRoom(edges_.size());
  rows_.Take(toggles_.Sums(), edges_.size());
  edges_.push_back(ticks);
  unobserved_.push_back(toggles_.time().UnobservedUpTo(ticks));
}

/// The last row ends with the dump, where something of it is after the last edge. Edges are told
/// apart from each other by one tick at least, since a step has only one value of the clock: no row
/// is empty of time.
Profile ClockRows::Finish(ModuleTree tree) {
  Profile profile;
  const CountedTime& time = toggles_.time();
  const std::uint64_t first = toggles_.window().Clamp(time.firstStamp);
  const std::uint64_t last = toggles_.window().Clamp(time.lastStamp);
  if (time.hasStamps && last > (edges_.empty() ? first : edges_.back())) Cut(last);
  if (!edges_.empty()) profile.edges.push_back(first);
  std::uint64_t unobserved = 0;
  for (std::size_t row = 0; row < edges_.size(); ++row) {
    const std::uint64_t ticks = edges_[row] - profile.edges.back();
    profile.observed.push_back(ticks - (unobserved_[row] - unobserved));
    unobserved = unobserved_[row];
    profile.edges.push_back(edges_[row]);
  }
  rows_.Finish(profile.windows());
  rows_.AddUp(tree);
  profile.toggles = std::move(rows_.rows());
  profile.modules = std::move(tree);
  return profile;
}

/// As many parts as their sums and their texts find room for among `mostCells`, two at least: that
/// of others, and the one that the signal begins with.
ValueParts::ValueParts(ToggleCounter& toggles, std::uint32_t width, std::uint64_t mostCells)
    : toggles_(toggles),
      width_(width),
      mostParts_(
          std::clamp<std::uint64_t>(mostCells / (toggles.Sums().size() + width), 2, kMostParts)),
      parts_(1),
      now_(AllUnknown(width)),
      part_(PartOf(now_)) {}

/// 0 for a value that finds no room any more.
std::size_t ValueParts::PartOf(const std::vector<ValueWord>& value) {
  std::string key = ValueKey(value);
  const auto known = places_.find(key);
  if (known != places_.end()) return known->second;
  if (parts_.size() >= mostParts_) return kOthers;
  places_.emplace(std::move(key), parts_.size());
  parts_.push_back({TextOf(value, width_), 0, {}});
  return parts_.size() - 1;
}

/// Gives what was counted since the last cut to the value that held.
void ValueParts::Cut() {
  const std::uint64_t observed = ObservedSoFar(toggles_);
  ValueSplit::Part& part = parts_[part_];
  part.observed += observed - std::exchange(since_, observed);
  std::vector<std::uint64_t>& sums = toggles_.Sums();
  AddToggles(part.toggles, sums);
  std::fill(sums.begin(), sums.end(), 0);
}

// Two values in turn may both be kOthers; the cut between them does no harm.
void ValueParts::Value(const std::vector<ValueWord>& value) {
  // Given again, but the same.
  if (value == now_) return;
  Cut();
  now_ = value;
  part_ = PartOf(value);
}

/// When observation goes on, the signal is x until it has a value.
void ValueParts::Pause() {
  Cut();
  now_ = AllUnknown(width_);
  part_ = PartOf(now_);
}

/// Parts are ranked by time, and listed by value.
ValueSplit ValueParts::Finish(ModuleTree tree, std::uint64_t mostValues) {
  Cut();
  ValueSplit split;
  // kOthers is the first part, for values that had no room.
  ValueSplit::Part others = std::move(parts_[kOthers]);
  split.others = others.observed > 0 ? 1 : 0;
  parts_.erase(parts_.begin());
  std::stable_sort(parts_.begin(), parts_.end(), [](const auto& one, const auto& other) {
    return one.observed > other.observed;
  });
  for (ValueSplit::Part& part : parts_) {
    // AllUnknown has a part from the start, which may never have held.
    if (part.observed == 0) continue;
    if (split.parts.size() < mostValues) {
      split.parts.push_back(std::move(part));
    } else {
      ++split.others;
      others.observed += part.observed;
      AddToggles(others.toggles, part.toggles);
    }
  }
  std::sort(split.parts.begin(), split.parts.end(),
            [](const auto& one, const auto& other) { return one.value < other.value; });
  if (split.others > 0) split.parts.push_back(std::move(others));
  for (ValueSplit::Part& part : split.parts) tree.AddUp(part.toggles);
  split.modules = std::move(tree);
  return split;
}

/// The end of the grain that a time lies in. Rounded up to a whole grain. In 128 bits, as rounding
/// up may pass 2^64.
std::uint64_t PeakSearch::GrainEnd(std::uint64_t ticks) const {
  const Wide end = (Wide{ticks} + grain_ - 1) / grain_ * grain_;
  return end > UINT64_MAX ? UINT64_MAX : static_cast<std::uint64_t>(end);
}

/// Takes the toggles of a step into the stretch that ends with it. Nothing toggled: no step.
void PeakSearch::EndStep(std::uint64_t ticks) {
  const std::uint64_t toggles = std::exchange(toggles_.Sums().front(), 0);
  if (toggles == 0) return;
  // Steps of one grain are one.
  const std::uint64_t now = GrainEnd(ticks);
  if (!steps_.empty() && steps_.back().ticks == now) {
    steps_.back().toggles += toggles;
  } else {
    steps_.push_back({now, toggles});
  }
  sum_ += toggles;
  // Whole grains only, so that both ends are rounded alike.
  const std::uint64_t length = length_ - length_ % grain_;
  // What is too long ago leaves the sum.
  while (now - steps_[first_].ticks >= length) sum_ -= steps_[first_++].toggles;
  if (sum_ > best_.toggles) best_ = {now - std::min(now, length), now, sum_, grain_};
  // From time to time the steps that left are thrown away.
  if (first_ > steps_.size() / 2) {
    // Only when they are more than half, so each step is moved about once.
    steps_.erase(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(first_));
    first_ = 0;
  }
  if (steps_.size() - first_ > mostSteps_) Coarsen();
}

/// Makes the grains so long that they are half as many. Steps of a stretch are never more than its
/// ticks, so a grain stays shorter than the stretch.
void PeakSearch::Coarsen() {
  std::size_t kept = 0;
  while (steps_.size() - first_ > mostSteps_ / 2) {
    grain_ *= 2;
    kept = 0;
    for (std::size_t at = first_; at < steps_.size(); ++at) {
      const Step step{GrainEnd(steps_[at].ticks), steps_[at].toggles};
      if (kept > 0 && steps_[kept - 1].ticks == step.ticks) {
        steps_[kept - 1].toggles += step.toggles;
      } else {
        steps_[kept++] = step;
      }
    }
    first_ = 0;
    steps_.resize(kept);
  }
}

/// The stretch as it is shown lies in the window, and a peak of no toggles is an empty one at the
/// begin.
Peak PeakSearch::Finish() {
  const CountedTime& time = toggles_.time();
  if (!time.hasStamps) return {};
  EndStep(time.lastStamp);
  const std::uint64_t first = toggles_.window().Clamp(time.firstStamp);
  const std::uint64_t last = toggles_.window().Clamp(time.lastStamp);
  Peak peak = best_;
  if (peak.toggles == 0) peak = {first, first, 0, grain_};
  peak.grain = grain_;
  peak.begin = std::clamp(peak.begin, first, last);
  peak.end = std::clamp(peak.end, first, last);
  // No toggle is won by making it as long as it was to be: a fuller stretch would be the peak.
  if (grain_ == 1 && peak.end - peak.begin < length_) {
    peak.end = last - peak.begin < length_ ? last : peak.begin + length_;
  }
  return peak;
}

}  // namespace orsa::kesncd
