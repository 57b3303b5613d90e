// Toggles of vectors and of signals that several modules share, and pauses.
#include "activity/profile/toggle_counter.h"

#include <algorithm>
#include <bit>

namespace orsa::kesncd {

namespace {

/// Ones in the places of the bits [from, to) of a signal that lie in its word `index`.
std::uint64_t Lanes(std::uint32_t from, std::uint32_t to, std::uint32_t index) {
  const std::uint64_t first = std::uint64_t{index} * kWordBits;
  const std::uint64_t low = std::clamp<std::uint64_t>(from, first, first + kWordBits) - first;
  const std::uint64_t high = std::clamp<std::uint64_t>(to, first, first + kWordBits) - first;
  const auto below = [](std::uint64_t end) {
    return end == kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << end) - 1;
  };
  return below(high) & ~below(low);
}

}  // namespace

ToggleCounter::ToggleCounter(const CodeBits& codes, const ModuleShares& shares, std::size_t modules,
                             const ActivityWindow& window)
    : bits_(codes), shares_(shares), window_(window), codes_(codes.codes()), sums_(modules) {
  std::size_t widest = 1;
  std::size_t words = 0;
  for (std::uint32_t codeId = 0; codeId < codes.codes(); ++codeId) {
    const std::span<const ModuleShare> own = shares.Of(codeId);
    if (own.empty()) continue;
    Code& code = codes_[codeId];
    const std::uint32_t width = codes.Width(codeId);
    if (width > 1) {
      code.kind = Kind::Vector;
      code.place = static_cast<std::uint32_t>(words);
      words += (width + kWordBits - 1) / kWordBits;
      widest = std::max<std::size_t>(widest, width);
    } else if (own.size() == 1 && own.front().times == 1) {
      code.kind = Kind::Scalar;
      code.place = own.front().module;
    } else {
      code.kind = Kind::SharedScalar;
    }
  }
  words_.resize(words);
  value_.resize((widest + kWordBits - 1) / kWordBits);
}

/// Adds toggles in a word of a signal to the modules that have these bits; a `sign` of -1 takes
/// them back.
void ToggleCounter::CountShares(std::uint32_t codeId, std::uint32_t index, std::uint64_t toggles,
                                std::uint64_t sign) {
  for (const ModuleShare& share : shares_.Of(codeId)) {
    const int count = std::popcount(toggles & Lanes(share.from, share.to, index));
    const std::int64_t counted = std::int64_t{share.times} * count;
    sums_[share.module] += sign * static_cast<std::uint64_t>(counted);
  }
}

/// Makes a code what it was before the step, where it had a value in it, or before its first value,
/// where observation began since the last one.
void ToggleCounter::TakeOddScalar(std::uint32_t codeId, Code& code) {
  if (code.step < stretch_) {
    code.known = 0;
    return;
  }
  const bool toggled = code.before != 0 && code.known != code.before && counts_ != 0;
  code.known = code.before;
  if (!toggled) return;
  if (code.kind == Kind::Scalar) {
    --sums_[code.place];
  } else {
    CountShares(codeId, 0, 1, ~std::uint64_t{0});
  }
}

void ToggleCounter::TakeVector(std::uint32_t codeId, Code& code, std::string_view value) {
  const std::uint32_t width = bits_.Width(codeId);
  ReadVectorValue(value, width, value_.data());
  const bool isFirst = code.step < stretch_;
  const bool isCorrection = code.step == step_;
  code.step = step_;
  std::uint32_t left = width;
  for (std::uint32_t index = 0; index * std::uint64_t{kWordBits} < width; ++index) {
    Word& word = words_[code.place + index];
    if (isFirst) {
      word = {};
    } else if (isCorrection) {
      const std::uint64_t toggled = word.hadKnown & (word.known ^ word.knew);
      if (toggled != 0 && counts_ != 0) CountShares(codeId, index, toggled, ~std::uint64_t{0});
      word.hasKnown = word.hadKnown;
      word.known = word.knew;
    } else {
      word.hadKnown = word.hasKnown;
      word.knew = word.known;
    }
    const std::uint64_t lanes =
        Lanes(0, std::min<std::uint32_t>(left, kWordBits), 0) & ~value_[index].unknown;
    const std::uint64_t toggles = word.hasKnown & lanes & (word.known ^ value_[index].high);
    word.hasKnown |= lanes;
    word.known = (word.known & ~lanes) | (value_[index].high & lanes);
    if (toggles != 0 && counts_ != 0) CountShares(codeId, index, toggles, 1);
    left -= std::min<std::uint32_t>(left, kWordBits);
  }
}

/// Before the first stamp nothing lasts, but what was known is forgotten.
void ToggleCounter::Command(Keyword command) {
  TakeWaiting();
  const std::uint64_t now = window_.Clamp(time_.lastStamp);
  if (command == Keyword::DumpOff && time_.isObserving) {
    time_.isObserving = false;
    time_.pausedAt = now;
    ++time_.pauses;
    ++step_;
  } else if (command == Keyword::DumpOn && !time_.isObserving) {
    time_.isObserving = true;
    if (time_.hasStamps) time_.unobserved += now - time_.pausedAt;
    stretch_ = ++step_;
  }
}

}  // namespace orsa::kesncd
