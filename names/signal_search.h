// Finds many signals of a dump by what a user calls them.
//
// A name may be a path from a top-level scope, the end of a path, or a bare name; its last part may
// be the dump's own name of a signal, a design's name (see name_match.h) or the name under which
// the flat map lists a bit ("data_3"). The surest reading that finds something counts: a whole path
// goes before the end of one, more scopes before fewer, the dump's own name before a design's.
// Scopes that share an identifier code are one answer, the outermost; different codes are different
// answers.
#ifndef KESNCD_NAMES_SIGNAL_SEARCH_H_
#define KESNCD_NAMES_SIGNAL_SEARCH_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "text/secret_hash.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// What one name means. Several variables are the same name for different signals.
struct SignalAnswer {
  // Indices; of each code the outermost variable only.
  std::vector<std::uint32_t> variables;  // outermost first; several: the name is ambiguous
  std::uint64_t more = 0;                // further ones that were not kept
  bool isBit = false;                    // the name is that of one bit in the variables' ranges
};

/// The names are looked up together, in one walk of the tree: the time is in proportion to the
/// names, the declarations and the answers. Construct it, then ask for each answer.
class SignalSearch {
 public:
  /// Looks the names up in the scope `top` and those below it. `exact` false: letter case makes no
  /// difference. Nothing of the arguments is kept.
  SignalSearch(const Declarations& declarations, std::uint32_t top, bool exact,
               const std::vector<std::string>& names);

  /// What the name of that number means. `name` is the index in `names`. The answer lives as long
  /// as this.
  const SignalAnswer& Answer(std::size_t name) const { return answers_[answerOf_[name]].answer; }

 private:
  /// Answers kept for one name: a bare "clk" may mean a signal of every module, and a message lists
  /// a few of them.
  static constexpr std::size_t kMostAnswers = 64;

  // A distinct name with what was found for it so far.
  struct Query {
    SignalAnswer answer;
    std::vector<std::uint32_t> codes;  // of the answer's variables
    std::uint32_t level = UINT32_MAX;  // how sure the reading is that found them; less is surer
  };
  /// A reading of a name: whose it is, and how sure. `level` is less the surer the reading is: by
  /// the number of its scopes first, then by the kind of its last part.
  struct Reading {
    std::uint32_t query;
    std::uint32_t level;
    bool isBit = false;
  };
  /// Readings as a bit of a range, by the bit's number. `next` leads past readings that need no
  /// further answer. A name that has enough answers is not looked at for the rest of the walk; a
  /// bus of a million bits then costs no more than those that still want some.
  struct BitReadings {
    std::vector<std::pair<std::int64_t, Reading>> readings;
    std::vector<std::uint32_t> next;
  };
  /// A scope text, which a name begins with and a scope's path ends in: its number, and whether it
  /// is the whole path.
  struct ScopeText {
    std::uint32_t id;
    bool isWhole;
  };

  // Before the walk: what names may be looked up by.
  void Ask(const std::string& name);
  void AddReadings(std::uint32_t query, std::string_view scopeText, std::string_view signal,
                   std::uint32_t rank);
  void AddText(std::uint32_t scopeText, char kind, std::string_view text, const Reading& reading);
  void AddBit(std::uint32_t scopeText, char kind, std::string_view base, std::int64_t bit,
              const Reading& reading);
  void SortBits();
  // In the walk: what a scope and its variables are looked up by.
  std::vector<ScopeText> TextsOf(const Declarations& declarations, std::uint32_t scope) const;
  void Take(const Declarations& declarations, std::uint32_t variable,
            const std::vector<ScopeText>& texts);
  void TakeText(std::uint32_t variable, std::uint32_t codeId, const ScopeText& scope, char kind,
                std::string_view text);
  void TakeRange(std::uint32_t variable, std::uint32_t codeId, const ScopeText& scope, char kind,
                 std::string_view base, std::int64_t low, std::int64_t high);
  bool Enter(const Reading& reading, bool isWhole, std::uint32_t variable, std::uint32_t codeId);
  // In small letters unless letter case counts.
  std::string Folded(std::string_view text) const;
  bool IsExpected(std::string_view text) const;

  const bool exact_;
  std::vector<Query> answers_;
  std::vector<std::uint32_t> answerOf_;  // by name: names that are alike are asked once
  // The numbers of the queries, by folded name.
  std::unordered_map<std::string, std::uint32_t, SecretTextHash> queries_;
  // The numbers of the scope texts; the empty one is 0.
  std::unordered_map<std::string, std::uint32_t, SecretTextHash> scopeTexts_;
  // Longer ends of paths need not be looked up.
  std::size_t longestScopeText_ = 0;
  // Readings by KeyOf.
  std::unordered_map<std::string, std::vector<Reading>, SecretTextHash> texts_;
  // Readings as a bit, by KeyOf without the number of the bit.
  std::unordered_map<std::string, BitReadings, SecretTextHash> bits_;
  std::vector<bool> expected_;  // by hash: texts that some reading is looked up by
};

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_SIGNAL_SEARCH_H_
