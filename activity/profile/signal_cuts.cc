// Rows of clocks and parts of values.
//
// A cut takes the counter's sums away and begins new ones. Both listeners rely on being told
// of a step when its toggles are in the sums and those of the next step are not.
#include "activity/profile/signal_cuts.h"

#include <algorithm>
#include <utility>

#include "text/failure.h"

namespace orsa::kesncd {

namespace {

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

/// A part's sums have no memory until it has held for once; `more` may be of one that never did.
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
  const bool mayRise = level == 1 && toggles_.window().Counts(now);
  if (mayRise && isOpen_) {
    headEnd_ = now;
    head_.resize(toggles_.Sums().size());
    head_.swap(toggles_.Sums());
  } else if (mayRise && known_ == 0) {
    Cut(now);
  }
  known_ = level;
  isOpen_ = false;
}

/// Room is asked for first: a clock of a long dump has more cycles than there is memory for.
void ClockRows::Cut(std::uint64_t ticks) {
  try {
    rows_.RequireRoom(edges_.size());
    rows_.Take(toggles_.Sums(), edges_.size());
  } catch (const Failure&) {
    if (isFirst_) throw;
    throw StretchTooLarge();
  }
  edges_.push_back(ticks);
  unobserved_.push_back(toggles_.time().UnobservedUpTo(ticks));
}

/// The row that is open here goes on in the next stretch, up to its first edge.
void ClockRows::Add(ClockRows& next) {
  const std::size_t open = edges_.size();
  rows_.Take(toggles_.Sums(), open);
  rows_.Take(next.head_, open);
  std::size_t begin = open;  // the row that the next stretch's first one becomes
  if (next.headEnd_ && known_ == 0) {
    edges_.push_back(*next.headEnd_);
    // The head ends before the first pause.
    unobserved_.push_back(toggles_.time().unobserved);
    ++begin;
  }
  edges_.insert(edges_.end(), next.edges_.begin(), next.edges_.end());
  for (const std::uint64_t ticks : next.unobserved_) {
    unobserved_.push_back(toggles_.time().unobserved + ticks);
  }
  AddOpenings(next.toggles_.Openings(), open);
  next.rows_.BeginAt(begin);
  rows_.Add(next.rows_);
  rows_.Take(next.toggles_.Sums(), edges_.size());
  if (!next.isOpen_) known_ = next.known_;
  toggles_.Follow(next.toggles_);
}

/// Openings come in the order of time, so rows only go on from `row`.
void ClockRows::AddOpenings(const std::vector<Opening>& openings, std::size_t row) {
  for (const Opening& opening : openings) {
    if (row < edges_.size() && edges_[row] < opening.ticks) {
      rows_.Take(toggles_.Sums(), row);
      const auto from = edges_.begin() + static_cast<std::ptrdiff_t>(row);
      const auto found = std::lower_bound(from, edges_.end(), opening.ticks);
      row = static_cast<std::size_t>(found - edges_.begin());
    }
    toggles_.Open(opening);
  }
  rows_.Take(toggles_.Sums(), row);
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
/// of others, and the one that the signal begins with. Only of the body's first stretch is it known
/// what that one's value is.
ValueParts::ValueParts(ToggleCounter& toggles, std::uint32_t width, const CutRoom& room)
    : toggles_(toggles),
      width_(width),
      mostParts_(std::clamp<std::uint64_t>(room.mostCells / (toggles.Sums().size() + width), 2,
                                           kMostParts)),
      isFirst_(room.isFirst),
      isOpen_(!room.isFirst),
      parts_(2),
      now_(AllUnknown(width)) {
  if (!isFirst_) return;
  parts_[kHead].value = TextOf(now_, width);
  places_.emplace(ValueKey(now_), kHead);
}

std::size_t ValueParts::PartOf(const std::vector<ValueWord>& value) {
  const std::string key = ValueKey(value);
  const auto known = places_.find(key);
  return known != places_.end() ? known->second : NewPart(key, TextOf(value, width_));
}

/// kOthers for a value that finds no room any more. A stretch that does not begin the body cannot
/// say so: the value may have its part in one before it.
std::size_t ValueParts::NewPart(const std::string& key, std::string text) {
  if (parts_.size() >= mostParts_) {
    if (isFirst_) return kOthers;
    throw StretchTooLarge();
  }
  places_.emplace(key, parts_.size());
  parts_.push_back({std::move(text), 0, {}});
  return parts_.size() - 1;
}

/// Moves what was counted since it was done last into a part.
void ValueParts::TakeSums(ValueSplit::Part& part) {
  std::vector<std::uint64_t>& sums = toggles_.Sums();
  AddToggles(part.toggles, sums);
  std::fill(sums.begin(), sums.end(), 0);
}

/// Gives what was counted since the last cut to the value that held.
void ValueParts::Cut() {
  const std::uint64_t observed = ObservedSoFar(toggles_);
  ValueSplit::Part& part = parts_[part_];
  part.observed += observed - std::exchange(since_, observed);
  TakeSums(part);
  if (isFirst_) return;
  const std::size_t end = toggles_.Openings().size();
  if (end > (openings_.empty() ? 0 : openings_.back().end)) openings_.push_back({end, part_});
}

// Two values in turn may both be kOthers; the cut between them does no harm.
void ValueParts::Value(const std::vector<ValueWord>& value) {
  // Given again, but the same.
  if (!isOpen_ && value == now_) return;
  Cut();
  now_ = value;
  part_ = PartOf(value);
  isOpen_ = false;
}

/// When observation goes on, the signal is x until it has a value.
void ValueParts::Pause() {
  Cut();
  now_ = AllUnknown(width_);
  part_ = PartOf(now_);
  isOpen_ = false;
}

/// The parts here in which those of another one are. Values get theirs in the order in which they
/// were met, as in one reading.
std::vector<std::size_t> ValueParts::PlacesOf(const ValueParts& next) {
  std::vector<const std::string*> keys(next.parts_.size());
  for (const auto& [key, place] : next.places_) keys[place] = &key;
  std::vector<std::size_t> places(next.parts_.size());
  places[kHead] = part_;
  for (std::size_t part = kHead + 1; part < places.size(); ++part) {
    const auto known = places_.find(*keys[part]);
    places[part] =
        known != places_.end() ? known->second : NewPart(*keys[part], next.parts_[part].value);
  }
  return places;
}

/// The value that holds here goes on until the next stretch's first one.
void ValueParts::Add(ValueParts& next) {
  Cut();
  next.Cut();
  const ActivityWindow& window = toggles_.window();
  parts_[part_].observed +=
      window.Clamp(next.toggles_.time().firstStamp) - window.Clamp(toggles_.time().lastStamp);
  const std::vector<std::size_t> places = PlacesOf(next);
  for (std::size_t part = kHead; part < places.size(); ++part) {
    ValueSplit::Part& to = parts_[places[part]];
    to.observed += next.parts_[part].observed;
    AddToggles(to.toggles, next.parts_[part].toggles);
  }
  AddOpenings(next, places);
  part_ = places[next.part_];
  toggles_.Follow(next.toggles_);
  since_ = ObservedSoFar(toggles_);
}

/// Whether a bit's first known value in the next stretch is a toggle is known here, and to which of
/// its parts it belongs, there.
void ValueParts::AddOpenings(ValueParts& next, const std::vector<std::size_t>& places) {
  const std::vector<Opening>& openings = next.toggles_.Openings();
  std::size_t at = 0;
  for (const OpeningsEnd& part : next.openings_) {
    for (; at < part.end; ++at) toggles_.Open(openings[at]);
    TakeSums(parts_[places[part.part]]);
  }
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

}  // namespace orsa::kesncd
