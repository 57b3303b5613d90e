// The readings of names, and the walk that finds what they mean.
#include "names/signal_search.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "names/design_names.h"
#include "names/name_match.h"
#include "names/scope_search.h"
#include "text/words.h"

namespace orsa::kesncd {

namespace {

// The kinds of texts that readings are looked up by, and how sure each makes a reading.
constexpr char kDumpText = 'd';    // the dump's own name
constexpr char kDesignText = 'n';  // a design's name
constexpr char kDesignBit = 'b';   // the same of a bit in a range
constexpr char kFlatText = 'f';    // a name in the flat map
constexpr char kFlatBit = 'g';     // the same of a bit in a range
constexpr std::uint32_t kTiers = 3;

// Parts of a name that may be scopes. A name with more of them is looked up by its last ones.
// Hostile names may have thousands.
constexpr std::uint32_t kMostParts = 64;
// More than any level of a whole path, so that those are surer.
constexpr std::uint32_t kNotWhole = kTiers * (kMostParts + 1);
// Half a megabyte: most texts of a dump are told from those asked for by one bit.
constexpr std::size_t kFilterBits = std::size_t{1} << 22;

/// The surest tier is 0.
std::uint32_t TierOf(char kind) {
  if (kind == kDumpText) return 0;
  return kind == kDesignText || kind == kDesignBit ? 1 : 2;
}

/// Kinds are kept apart, since one text may be a dump's name and a design's.
std::string KeyOf(std::uint32_t scopeText, char kind, std::string_view text) {
  std::string key(1, kind);
  key += std::to_string(scopeText);
  key += ':';
  return key += text;
}

}  // namespace

SignalSearch::SignalSearch(const Declarations& declarations, std::uint32_t top, bool exact,
                           const std::vector<std::string>& names)
    : exact_(exact), expected_(kFilterBits) {
  // A bare name stands in any scope.
  scopeTexts_.emplace("", 0);
  for (const std::string& name : names) Ask(name);
  // Only now are all bits known that are asked for.
  SortBits();
  // Outermost first, which decides between variables of one code.
  for (const std::uint32_t scope : ScopesByDepth(declarations, top)) {
    const auto& variables = declarations.scopes[scope].variables;
    if (variables.empty()) continue;
    // The same for all variables of the scope.
    const std::vector<ScopeText> texts = TextsOf(declarations, scope);
    for (const std::uint32_t variable : variables) Take(declarations, variable, texts);
  }
}

std::string SignalSearch::Folded(std::string_view text) const {
  std::string folded(text);
  if (exact_) return folded;
  for (char& c : folded) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return folded;
}

/// Cuts a name at each of its "/" into scopes and a signal; each cut is a reading. "a/b/q" is q in
/// a/b, "b/q" in a, or all of it one name with slashes in it.
void SignalSearch::Ask(const std::string& name) {
  const std::string folded = Folded(name);
  const auto [place, isNew] =
      queries_.try_emplace(folded, static_cast<std::uint32_t>(answers_.size()));
  answerOf_.push_back(place->second);
  if (!isNew) return;
  const std::uint32_t query = place->second;
  answers_.emplace_back();
  std::size_t cut = folded.rfind('/');
  // The last "/" first: more scopes are surer than fewer.
  for (std::uint32_t rank = 0; rank < kMostParts && cut != std::string::npos && cut > 0; ++rank) {
    AddReadings(query, std::string_view(folded).substr(0, cut),
                std::string_view(folded).substr(cut + 1), rank);
    cut = folded.rfind('/', cut - 1);
  }
  // The least sure: all of it is the signal's name.
  AddReadings(query, "", folded, kMostParts);
}

void SignalSearch::AddReadings(std::uint32_t query, std::string_view scopeText,
                               std::string_view signal, std::uint32_t rank) {
  // "tb/" names no signal.
  if (signal.empty()) return;
  const std::uint32_t id =
      scopeTexts_
          .try_emplace(std::string(scopeText), static_cast<std::uint32_t>(scopeTexts_.size()))
          .first->second;
  longestScopeText_ = std::max(longestScopeText_, scopeText.size());
  // A rank's tiers come before those of the next rank.
  const auto reading = [&](char kind) { return Reading{query, rank * kTiers + TierOf(kind)}; };
  AddText(id, kDumpText, signal, reading(kDumpText));
  const std::string extra(1, exact_ ? kExtraLetter : static_cast<char>(std::tolower(kExtraLetter)));
  // As it stands, and flattened if that is something else.
  const std::string forms[] = {std::string(signal), SlashesFlattened(signal)};
  for (std::size_t i = 0; i < (forms[0] == forms[1] ? 1U : 2U); ++i) {
    AddText(id, kDesignText, forms[i], reading(kDesignText));
    // A dump's name may have the letter after a design's.
    AddText(id, kDesignText, forms[i] + extra, reading(kDesignText));
    AddText(id, kFlatText, forms[i], reading(kFlatText));
    if (const auto bit = SplitIndex(forms[i], Slashes::Kept)) {
      AddBit(id, kDesignBit, bit->base, bit->index, reading(kDesignBit));
    }
    // "data_3" as the flat map lists it.
    std::string_view base = forms[i];
    std::int64_t bit = 0;
    if (TakeBitNumber(base, bit)) AddBit(id, kFlatBit, base, bit, reading(kFlatBit));
  }
}

void SignalSearch::AddText(std::uint32_t scopeText, char kind, std::string_view text,
                           const Reading& reading) {
  texts_[KeyOf(scopeText, kind, text)].push_back(reading);
  // Before the walk, so that each variable costs a look or two.
  expected_[SecretTextHash{}(text) % kFilterBits] = true;
}

void SignalSearch::AddBit(std::uint32_t scopeText, char kind, std::string_view base,
                          std::int64_t bit, const Reading& reading) {
  const Reading ofBit{reading.query, reading.level, true};
  bits_[KeyOf(scopeText, kind, base)].readings.emplace_back(bit, ofBit);
  expected_[SecretTextHash{}(base) % kFilterBits] = true;
}

bool SignalSearch::IsExpected(std::string_view text) const {
  return expected_[SecretTextHash{}(text) % kFilterBits];
}

void SignalSearch::SortBits() {
  for (auto& [key, bits] : bits_) {
    std::sort(bits.readings.begin(), bits.readings.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    // One place more than there are readings stands for their end.
    bits.next.resize(bits.readings.size() + 1);
    for (std::uint32_t i = 0; i < bits.next.size(); ++i) bits.next[i] = i;
  }
}

/// The scope texts that the path of a scope ends in, the shortest, which is empty, first.
std::vector<SignalSearch::ScopeText> SignalSearch::TextsOf(const Declarations& declarations,
                                                           std::uint32_t scope) const {
  std::vector<ScopeText> texts{{0, scope == Declarations::kDump}};
  std::string end;
  // Only the empty text was asked for where there is one alone.
  while (scope != Declarations::kDump && scopeTexts_.size() > 1) {
    const DumpScope& part = declarations.scopes[scope];
    // No asked text is that long.
    if (end.size() + part.name.size() > longestScopeText_) break;
    end.insert(0, end.empty() ? Folded(part.name) : Folded(part.name) + "/");
    scope = part.parent;
    const auto found = scopeTexts_.find(end);
    if (found == scopeTexts_.end()) continue;
    texts.push_back({found->second, scope == Declarations::kDump});
  }
  return texts;
}

/// The names under which a variable may be asked for, as far as any of them is.
void SignalSearch::Take(const Declarations& declarations, std::uint32_t variable,
                        const std::vector<ScopeText>& texts) {
  const std::uint32_t codeId = declarations.variables[variable].codeId;
  const std::string name = Folded(declarations.variables[variable].name);
  const DumpName parsed = ParseDumpName(name);
  const std::optional<std::string> rewritten =
      parsed.kind == DumpName::Kind::Plain ? RewriteBitIndex(parsed.text) : std::nullopt;
  // What has no bracket is its own flat name.
  const bool hasBrackets = name.find_first_of("[]") != std::string::npos;
  const DesignNames flat = hasBrackets ? RewriteName(name) : DesignNames{name};
  if (!IsExpected(name) && !IsExpected(parsed.text) && !(rewritten && IsExpected(*rewritten)) &&
      !IsExpected(flat.base)) {
    return;
  }
  // Each scope text that the path ends in is a place where the name may have been asked.
  for (const ScopeText& scope : texts) {
    TakeText(variable, codeId, scope, kDumpText, name);
    if (parsed.kind == DumpName::Kind::Plain) {
      TakeText(variable, codeId, scope, kDesignText, parsed.text);
      if (rewritten) TakeText(variable, codeId, scope, kDesignText, *rewritten);
    } else if (parsed.kind == DumpName::Kind::Range) {
      TakeRange(variable, codeId, scope, kDesignBit, parsed.text, parsed.low, parsed.high);
    }
    if (flat.isRange) {
      TakeRange(variable, codeId, scope, kFlatBit, flat.base, flat.low, flat.high);
    } else {
      TakeText(variable, codeId, scope, kFlatText, flat.base);
    }
  }
}

void SignalSearch::TakeText(std::uint32_t variable, std::uint32_t codeId, const ScopeText& scope,
                            char kind, std::string_view text) {
  const auto found = texts_.find(KeyOf(scope.id, kind, text));
  if (found == texts_.end()) return;
  for (const Reading& reading : found->second) Enter(reading, scope.isWhole, variable, codeId);
}

void SignalSearch::TakeRange(std::uint32_t variable, std::uint32_t codeId, const ScopeText& scope,
                             char kind, std::string_view base, std::int64_t low,
                             std::int64_t high) {
  const auto found = bits_.find(KeyOf(scope.id, kind, base));
  if (found == bits_.end()) return;
  // The ways past full readings are shortened while they are walked.
  auto& [readings, next] = found->second;
  const auto follow = [&next = next](std::size_t i) {
    while (next[i] != i) {
      next[i] = next[next[i]];
      i = next[i];
    }
    return i;
  };
  // Only bits that were asked for are visited, however large the range.
  const auto first =
      std::lower_bound(readings.begin(), readings.end(), low,
                       [](const auto& a, std::int64_t bit) { return a.first < bit; });
  std::size_t i = follow(static_cast<std::size_t>(first - readings.begin()));
  while (i < readings.size() && readings[i].first <= high) {
    const bool isFull = !Enter(readings[i].second, scope.isWhole, variable, codeId);
    if (isFull) next[i] = static_cast<std::uint32_t>(i) + 1;
    i = follow(i + 1);
  }
}

/// Enters an answer unless a surer reading has found one; false when the name has enough of them.
/// Shallow scopes come first, so a whole path has been met before the ends of longer ones.
bool SignalSearch::Enter(const Reading& reading, bool isWhole, std::uint32_t variable,
                         std::uint32_t codeId) {
  Query& query = answers_[reading.query];
  // Any end of a path is less sure than every whole path.
  const std::uint32_t level = reading.level + (isWhole ? 0 : kNotWhole);
  // A surer reading has found something.
  if (level > query.level) return true;
  // Answers of less sure readings are dropped.
  if (level < query.level) {
    query = {};
    query.level = level;
    query.answer.isBit = reading.isBit;
  }
  // A variable of the same signal: the outermost one stands for it.
  if (std::find(query.codes.begin(), query.codes.end(), codeId) != query.codes.end()) return true;
  if (query.codes.size() == kMostAnswers) {
    ++query.answer.more;
    return false;
  }
  query.codes.push_back(codeId);
  query.answer.variables.push_back(variable);
  return true;
}

}  // namespace orsa::kesncd
