// Which names share a code, and the letters of the new codes.
#include "free_format/prepare/new_codes.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orsa::kesncd {

namespace {

// In byte order. Left out: b, r, x and z, values in front of a word; e, p and x, which go on a
// number that stands before them in a reader's memory; and every digit and sign. 40 letters: three
// of them name 64000 signals.
constexpr std::string_view kLetters = "ACDFGHIJKLMNOQSTUVWYacdfghijklmnoqstuvwy";

/// Counts names by code in one scope after another. Enter each scope, then Take its variables in
/// their order. A code's entry is of the scope that took it last, so nothing is cleared between
/// scopes.
class ScopeNames {
 public:
  explicit ScopeNames(const Declarations& declarations)
      : declarations_(declarations), byCode_(declarations.codes.size()) {}

  void Enter(std::uint32_t scope) {
    scope_ = scope;
    // Only codes with several names in this scope are in it; most scopes have none.
    shared_.clear();
  }

  CodeShare Take(std::uint32_t variable) {
    const DumpVariable& taken = declarations_.variables[variable];
    Entry& entry = byCode_[taken.codeId];
    // The code's first name in this scope.
    if (entry.names == 0 || entry.scope != scope_) {
      entry = {scope_, 1, variable};
      return {};
    }
    // The first name goes into the set only now that there is a second one.
    if (entry.names == 1) shared_.emplace(taken.codeId, declarations_.variables[entry.first].name);
    if (!shared_.emplace(taken.codeId, taken.name).second) return {0, true, false};
    if (entry.names == kMostNames) return {0, false, true};
    return {entry.names++, false, false};
  }

 private:
  // The last scope that declared the code.
  struct Entry {
    std::uint32_t scope = 0;
    // How many names of the code it has.
    std::uint32_t names = 0;
    // The variable that has the first of them.
    std::uint32_t first = 0;
  };

  const Declarations& declarations_;
  std::vector<Entry> byCode_;
  std::uint32_t scope_ = 0;
  std::set<std::pair<std::uint32_t, std::string_view>> shared_;  // codes of several names
};

}  // namespace

std::vector<CodeShare> ShareCodes(const Declarations& declarations) {
  std::vector<CodeShare> shares(declarations.variables.size());
  ScopeNames names(declarations);
  for (std::uint32_t scope = 0; scope < declarations.scopes.size(); ++scope) {
    names.Enter(scope);
    for (const std::uint32_t variable : declarations.scopes[scope].variables) {
      shares[variable] = names.Take(variable);
    }
  }
  return shares;
}

NewCodes::NewCodes(const Declarations& declarations, const std::vector<CodeShare>& shares)
    : isShared_(declarations.codes.size()), further_(declarations.codes.size()) {
  // A code needs as many further texts as its fullest scope has further names.
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const std::uint32_t code = declarations.variables[i].codeId;
    further_[code].count = std::max(further_[code].count, shares[i].name);
    if (shares[i].name > 0) isShared_[code] = true;
  }
  std::uint32_t furtherTexts = 0;
  for (Range& further : further_) {
    further.start = furtherTexts;
    furtherTexts += further.count;
  }
  const std::size_t all = further_.size() + furtherTexts;
  // The shortest length that names all of them.
  for (std::size_t room = kLetters.size(); room < all; room *= kLetters.size()) ++length_;
  // Texts lie apart by four or eight bytes, so that reading eight never leaves the vectors.
  step_ = length_ <= kReadAhead / 2 ? kReadAhead / 2 : kReadAhead;
  first_.resize(further_.size() * step_ + kReadAhead);
  furtherTexts_.resize(furtherTexts * step_ + kReadAhead);
}

std::string_view NewCodes::CodeOf(const DumpVariable& variable, const CodeShare& share) {
  char* const text =
      share.name == 0 ? &first_[variable.codeId * step_]
                      : &furtherTexts_[(further_[variable.codeId].start + share.name - 1) * step_];
  // Not given out yet: a code stands for the same signal in every scope.
  if (text[0] == '\0') {
    std::uint64_t number = given_++;
    // The last letter changes fastest, so codes in order are texts in order.
    for (std::size_t i = length_; i-- > 0; number /= kLetters.size()) {
      text[i] = kLetters[number % kLetters.size()];
    }
  }
  return {text, length_};
}

}  // namespace orsa::kesncd
