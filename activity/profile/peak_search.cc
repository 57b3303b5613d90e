// The window that slides over steps, its grains, and how searches in pieces of a dump are joined.
#include "activity/profile/peak_search.h"

#include <algorithm>
#include <utility>

namespace orsa::kesncd {

namespace {

__extension__ using Wide = unsigned __int128;

}  // namespace

/// The time rounded up to a whole grain. In 128 bits, as that may pass 2^64.
std::uint64_t PeakSearch::GrainEnd(std::uint64_t ticks) const {
  const Wide end = (Wide{ticks} + grain_ - 1) / grain_ * grain_;
  return end > UINT64_MAX ? UINT64_MAX : static_cast<std::uint64_t>(end);
}

/// Takes the toggles of the open step.
void PeakSearch::EndStep() {
  const std::uint64_t ticks = toggles_.time().lastStamp;
  const std::uint64_t toggles = std::exchange(toggles_.Sums().front(), 0);
  if (isFirst_) {
    TakeStep(ticks, toggles);
  } else {
    TakeInPiece(ticks, toggles);
  }
}

/// Nothing toggled: no step.
void PeakSearch::TakeStep(std::uint64_t ticks, std::uint64_t toggles) {
  if (toggles == 0) return;
  Slide(ticks, toggles);
  Try(steps_.back().ticks, sum_);
  if (steps_.size() - first_ > mostSteps_) Coarsen();
}

/// Where a bit has its first known value something may have toggled.
void PeakSearch::TakeInPiece(std::uint64_t ticks, std::uint64_t toggles) {
  const std::size_t openings = toggles_.Openings().size();
  const bool opens = std::exchange(openings_, openings) < openings;
  if (!opens && toggles == 0) return;
  if (opens) openSteps_.push_back(ticks);
  Slide(ticks, toggles);
  if (steps_.size() - first_ > mostSteps_) throw StretchTooLarge();
  // The piece before may have toggled up to the tick before the first stamp.
  if (ticks - toggles_.time().firstStamp < length_ - 1) {
    head_.push_back({ticks, toggles});
    return;
  }
  while (low_ < openSteps_.size() && ticks - openSteps_[low_] >= length_) ++low_;
  const std::size_t high = openSteps_.size();
  if (bestEnds_.empty() || bestEnds_.back().low != low_ || bestEnds_.back().high != high) {
    bestEnds_.push_back({low_, high, {ticks, sum_}});
  } else if (sum_ > bestEnds_.back().end.toggles) {
    bestEnds_.back().end = {ticks, sum_};
  }
}

/// Moves the stretch so that it ends with a step.
void PeakSearch::Slide(std::uint64_t ticks, std::uint64_t toggles) {
  // Steps of one grain are one.
  const std::uint64_t now = GrainEnd(ticks);
  if (!steps_.empty() && steps_.back().ticks == now) {
    steps_.back().toggles += toggles;
  } else {
    steps_.push_back({now, toggles});
  }
  sum_ += toggles;
  // What is too long ago leaves the sum.
  while (now - steps_[first_].ticks >= WholeGrains()) sum_ -= steps_[first_++].toggles;
  // Steps that left are thrown away when they are more than half, so each is moved about once.
  if (first_ > steps_.size() / 2) {
    steps_.erase(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(first_));
    first_ = 0;
  }
}

/// Of several that are as busy the first stays.
void PeakSearch::Try(std::uint64_t end, std::uint64_t toggles) {
  if (toggles > best_.toggles) best_ = {end - std::min(end, WholeGrains()), end, toggles, grain_};
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

/// What toggled by openings of the next piece in its first openSteps_, up to each of them.
std::vector<std::uint64_t> PeakSearch::TogglesOfOpenings(PeakSearch& next) {
  std::vector<std::uint64_t> sums{0};
  const std::vector<Opening>& openings = next.toggles_.Openings();
  std::size_t at = 0;
  for (const std::uint64_t ticks : next.openSteps_) {
    for (; at < openings.size() && openings[at].ticks == ticks; ++at) toggles_.Open(openings[at]);
    sums.push_back(sums.back() + std::exchange(toggles_.Sums().front(), 0));
  }
  return sums;
}

/// Tries the ends of the next piece in the order of time, as one reading does. Ends at which
/// nothing toggled after all are tried too, and are never better than the end before them.
void PeakSearch::Add(PeakSearch& next) {
  EndStep();
  next.EndStep();
  const std::vector<std::uint64_t> opened = TogglesOfOpenings(next);
  const auto real = [&](const Step& step) {
    const std::vector<std::uint64_t>& ticks = next.openSteps_;
    const auto found = std::lower_bound(ticks.begin(), ticks.end(), step.ticks);
    const auto at = static_cast<std::size_t>(found - ticks.begin());
    const bool opens = found != ticks.end() && *found == step.ticks;
    return step.toggles + (opens ? opened[at + 1] - opened[at] : 0);
  };
  for (const Step& step : next.head_) TakeStep(step.ticks, real(step));
  for (const BestEnd& best : next.bestEnds_) {
    Try(best.end.ticks, best.end.toggles + opened[best.high] - opened[best.low]);
  }
  // After the head no step of this piece is within the length any more.
  if (!next.bestEnds_.empty()) {
    steps_.clear();
    first_ = 0;
    sum_ = 0;
    for (std::size_t at = next.first_; at < next.steps_.size(); ++at) {
      const Step step{next.steps_[at].ticks, real(next.steps_[at])};
      if (step.toggles > 0) steps_.push_back(step);
      sum_ += step.toggles;
    }
  }
  if (grain_ > 1) throw StretchTooLarge();
  toggles_.Follow(next.toggles_);
}

/// The stretch as it is shown lies in the window, and a peak of no toggles is an empty one at the
/// begin.
Peak PeakSearch::Finish() {
  const CountedTime& time = toggles_.time();
  if (!time.hasStamps) return {};
  EndStep();
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
