#include "cli/commands/name_search.h"

#include <algorithm>
#include <cctype>
#include <map>

#include "cli/commands/tree_path.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::VmodHier;
using orsa::kesncd::VmodSignal;

// Behind the form of a name that stands for a range of bits, or that may be a bit of one.
constexpr char kRange = '\n';

}  // namespace

NameSearch::NameSearch(const VmodHier& root, const std::string& module, bool exact,
                       const std::vector<std::string>& names)
    : exact_(exact) {
  for (const std::string& name : names) {
    for (std::string& form : FormsInDesign(name)) candidates_.try_emplace(std::move(form));
  }
  std::uint64_t place = 0;
  WalkScopes(
      root,
      [&](const VmodHier& scope, int) {
        const std::string& asked = &scope == &root ? module : scope.name;
        if (!VmodHier::IsNameEqual(scope.name, asked, exact_)) return false;
        for (const auto& [code, signal] : scope.signals) Take({&scope, &signal}, place++);
        return false;
      },
      [](const VmodHier&, int) { return true; });
}

/// Signals come in the order in which a search meets them.
void NameSearch::Take(const FoundSignal& found, std::uint64_t place) {
  const auto entry = candidates_.find(FormInDump(found.signal->name));
  if (entry == candidates_.end()) return;
  std::vector<Candidate>& alike = entry->second;
  const bool isKnown = std::any_of(alike.begin(), alike.end(), [&](const Candidate& candidate) {
    return candidate.found.signal->name == found.signal->name;
  });
  if (!isKnown) alike.push_back({place, found});
}

FoundSignal NameSearch::Find(const std::string& name) const {
  Candidate first{UINT64_MAX, {}};
  for (const std::string& form : FormsInDesign(name)) {
    const auto entry = candidates_.find(form);
    if (entry == candidates_.end()) continue;
    for (const Candidate& candidate : entry->second) {
      if (candidate.place >= first.place) break;
      if (VmodHier::IsNameEqual(candidate.found.signal->name, name, exact_)) first = candidate;
    }
  }
  return first.found;
}

/// Separators and brackets as "_", without the letters "I" that a dump may have behind a name, in
/// one letter case where that makes no difference.
std::string NameSearch::RoughForm(std::string name) const {
  for (char& c : name) {
    if (c == '/' || c == '[' || c == ']') c = '_';
    if (!exact_) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  name.erase(name.find_last_not_of(exact_ ? 'I' : 'i') + 1);
  return name;
}

/// Of "data[7:0]" only what stands before the range. What follows the last bracket does not count
/// in a name with a ":".
std::string NameSearch::FormInDump(const std::string& name) const {
  if (name.find(':') == std::string::npos) return RoughForm(name);
  const std::string cut = name.substr(0, name.rfind(']'));
  if (cut.find(':') == std::string::npos) return RoughForm(cut);
  return RoughForm(cut.substr(0, cut.rfind('['))) + kRange;
}

/// As it stands, and without an index as a bit of a range: "data_5_" may be one of "data[7:0]".
std::vector<std::string> NameSearch::FormsInDesign(const std::string& name) const {
  // Without letter case names are compared as far as a NUL.
  const std::string seen = exact_ ? name : name.substr(0, name.find('\0'));
  std::vector<std::string> forms{RoughForm(seen)};
  if (seen.empty() || std::string_view("]_/").find(seen.back()) == std::string_view::npos) {
    return forms;
  }
  const std::size_t open = seen.find_last_of("[_/", seen.size() - 2);
  if (seen.size() > 1 && open != std::string::npos) {
    forms.push_back(RoughForm(seen.substr(0, open)) + kRange);
  }
  return forms;
}

double FrequencyOf(const VmodSignal& signal) {
  // The library gives the frequencies of whole scopes.
  VmodHier scope;
  scope.signals.emplace(signal.symbol, signal);
  std::map<std::string, double> frequencies;
  scope.GetSignalFreqHier(frequencies);
  return frequencies.begin()->second;
}

}  // namespace orsa::kesncd::cli
