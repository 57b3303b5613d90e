// Entering names by all that can be asked for them, and looking them up.
#include "names/name_index.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <iterator>
#include <optional>
#include <set>

#include "names/name_match.h"
#include "text/words.h"

namespace orsa::kesncd {

NameIndex::NameIndex(const std::vector<std::string_view>& signals, std::size_t ofRoot, bool exact,
                     const std::vector<std::string_view>& asked)
    : exact_(exact), ofRoot_(ofRoot), texts_(&memory_), ranges_(&memory_) {
  // By the C library's rule for each character, as NamesMatch compares.
  for (std::size_t c = 0; c < folds_.size(); ++c) {
    folds_[c] = static_cast<char>(exact ? static_cast<int>(c) : std::tolower(static_cast<int>(c)));
  }
  // A power of two, so that a hash is cut by a mask.
  constexpr std::size_t kBitsOfName = 128;  // for about eight keys: few that are no key look so
  expected_.resize(std::bit_ceil(kBitsOfName * (asked.size() + 1)));
  // Expected first: signals that no name can mean are then dropped at once.
  for (const std::string_view design : asked) ExpectKeysOf(design);
  for (Place place = 0; place < signals.size(); ++place) Enter(signals[place], place);
  // The keys are the tables' own texts, which live as long.
  for (const auto& [base, ranges] : ranges_) segments_.emplace(base, Segments(ranges));
}

/// A design name may be meant as it stands or flattened, with or without the extra letter.
NameIndex::Keys NameIndex::KeysOf(std::string_view design) const {
  const std::string_view seen = SeenPart(design, exact_);
  Keys keys;
  keys.forms[0] = Folded(seen);
  keys.count = seen.find('/') == std::string_view::npos ? 1 : 2;
  if (keys.count == 2) keys.forms[1] = SlashesFlattened(keys.forms[0]);
  keys.hasLetter = seen.size() == design.size();  // after a NUL the letter is out of sight
  return keys;
}

/// With a secret key, or a dump's names could all look expected.
std::size_t NameIndex::BitOf(std::string_view text) const {
  return SecretHash(text) & (expected_.size() - 1);
}

void NameIndex::ExpectKeysOf(std::string_view design) {
  Keys keys = KeysOf(design);
  for (std::string& form : keys) {
    // As a plain name, as a bit of a range, and as a name with the letter after it.
    Expect(form);
    if (const auto bit = SplitIndex(form, Slashes::Kept)) Expect(bit->base);
    // Written after the form itself, which is not needed any more.
    if (keys.hasLetter) Expect(form += folds_[kExtraLetter]);
  }
}

void NameIndex::Expect(std::string_view text) {
  expected_[BitOf(text)] = true;
}

bool NameIndex::IsExpected(std::string_view text) const {
  return expected_[BitOf(text)];
}

/// As ParseDumpName reads it; the cases are those of NamesMatch.
void NameIndex::Enter(std::string_view signal, Place place) {
  const DumpName name = ParseDumpName(signal);
  switch (name.kind) {
    case DumpName::Kind::Nothing:
      break;
    case DumpName::Kind::Plain:
      EnterText(name.text, place);
      // "cnt[3]" may be asked for as "cnt_3_".
      if (const auto rewritten = RewriteBitIndex(name.text)) EnterText(*rewritten, place);
      break;
    case DumpName::Kind::Range:
      if (SeenPart(name.text, exact_).size() < name.text.size()) {  // the index is out of sight
        EnterText(name.text, place);
      } else {
        // Most ranges of a dump are dropped here.
        const std::string folded = Folded(name.text);
        if (IsExpected(folded)) {
          ranges_[Kept(folded)].push_back({name.low, name.high, place});
        }
      }
      break;
  }
}

void NameIndex::EnterText(std::string_view text, Place place) {
  const std::string folded = Folded(text);
  if (!IsExpected(folded)) return;
  // Looked for first: names that many scopes have are kept once.
  auto entry = texts_.find(folded);
  if (entry == texts_.end()) entry = texts_.emplace(Kept(folded), First()).first;
  entry->second.Take(FirstAt(place));
}

/// Cuts the indices into segments in each of which the same ranges hold all indices. Asked once for
/// all ranges of a name, so that finding a bit takes a search by halves and no walk.
std::vector<NameIndex::Segment> NameIndex::Segments(const std::pmr::vector<Range>& ranges) const {
  struct Event {
    std::int64_t at;
    bool opens;
    Place place;
  };
  std::vector<Event> events;
  for (const Range& range : ranges) {
    // A range opens at its lowest index and closes after its highest one.
    events.push_back({range.low, true, range.place});
    // Bounds have 32 bits, so 64 are enough for one more.
    events.push_back({range.high + 1, false, range.place});
  }
  std::sort(events.begin(), events.end(),
            [](const Event& a, const Event& b) { return a.at < b.at; });
  std::vector<Segment> segments;
  // A set, since the first one of all is asked, and a range may close that is not the first.
  std::set<Place> open;
  for (const Event& event : events) {
    if (event.opens) {
      open.insert(event.place);
    } else {
      open.erase(event.place);
    }
    // All events at one index make one segment; its answer is that after the last of them.
    if (segments.empty() || segments.back().low != event.at) segments.push_back({event.at, {}});
    First& first = segments.back().first;
    first.ofAll = open.empty() ? kNowhere : *open.begin();
    // Places grow with the order of a search, and those of the root are the first.
    const auto below = open.lower_bound(static_cast<Place>(ofRoot_));
    first.below = below == open.end() ? kNowhere : *below;
  }
  return segments;
}

/// As a text is compared: as far as it is seen.
std::string NameIndex::Folded(std::string_view text) const {
  std::string folded(SeenPart(text, exact_));
  if (exact_) return folded;
  for (char& c : folded) c = folds_[static_cast<unsigned char>(c)];
  return folded;
}

/// A copy of a text that lives as long as the index. The memory is released with the index, so no
/// destructor of a text is needed.
std::string_view NameIndex::Kept(std::string_view text) {
  if (text.empty()) return {};
  char* const copy = static_cast<char*>(memory_.allocate(text.size(), 1));
  // cppcheck-suppress invalidLifetime ; the caller's text lives until it returns
  std::copy(text.begin(), text.end(), copy);
  return {copy, text.size()};
}

void NameIndex::First::Take(const First& other) {
  ofAll = std::min(ofAll, other.ofAll);
  below = std::min(below, other.below);
}

NameIndex::First NameIndex::FirstAt(Place place) const {
  return {place, place < ofRoot_ ? kNowhere : place};
}

NameIndex::First NameIndex::FindText(const std::string& text) const {
  const auto found = texts_.find(text);
  return found == texts_.end() ? First() : found->second;
}

/// A design writes "data[5]" or "data_5_".
NameIndex::First NameIndex::FindBit(const std::string& design) const {
  const std::optional<IndexedName> bit = SplitIndex(design, Slashes::Kept);
  if (!bit) return {};
  const auto found = segments_.find(bit->base);
  if (found == segments_.end()) return {};
  // The segment that holds the index is the last one that begins at it or before.
  const auto above = std::upper_bound(
      found->second.begin(), found->second.end(), bit->index,
      [](std::int64_t index, const Segment& segment) { return index < segment.low; });
  return above == found->second.begin() ? First() : std::prev(above)->first;
}

NameIndex::Place NameIndex::Find(const std::string& design, bool withRoot) const {
  // The first over all forms, since a search would have met it first.
  First first;
  Keys keys = KeysOf(design);
  for (std::string& form : keys) {
    first.Take(FindText(form));
    // Before the letter is added, which would end the index.
    first.Take(FindBit(form));
    if (keys.hasLetter) first.Take(FindText(form += folds_[kExtraLetter]));
  }
  return withRoot ? first.ofAll : first.below;
}

}  // namespace orsa::kesncd
