// Parse tables: what the parser does in each state.
//
// A state is a set of rules with a mark in each that shows how far they have been read. Its shifts
// are the tokens that may come next; where a rule has been read to its end, the state reduces by
// it. A state has one reduction at most and takes it whenever no shift fits, whatever the token is:
// a wrong token is found by the state where nothing is left to reduce, in front of the same token.
// Where there is nothing to shift, the token is not even read, so that the action of a change runs
// before the word after it is looked at.
#ifndef KESNCD_GRAMMAR_TABLES_H_
#define KESNCD_GRAMMAR_TABLES_H_

#include <array>
#include <cstdint>

#include "kesncd/grammar/grammar.h"

namespace orsa::kesncd {

/// States number from 0; the two marks are above all of them.
inline constexpr std::uint8_t kNoState = 255;
inline constexpr std::uint8_t kAccept = 254;
inline constexpr std::uint8_t kNoRule = 255;

/// The column of a token: the end of input, then the codes from the error token on. Tokens from 256
/// on are close together; the end of input is 0.
constexpr int ColumnOf(int token) {
  return token == kEndOfInput ? 0 : token - kErrorToken + 1;
}
inline constexpr int kColumns = ColumnOf(kVersion) + 1;

/// A rule's number and all that the parser needs of it, so that it never looks at the grammar.
struct Reduction {
  std::uint8_t rule = kNoRule;
  std::uint8_t length = 0;  // symbols on the rule's right
  std::uint8_t left = 0;    // column of its left side in `gotos`
  bool startsWithToken = false;
  Action action = Action::None;
};

/// What a word does in a state where it is one more item of a list: the reductions that follow its
/// shift, of which the last joins it to the list and leads back to the state. For a word in a dump:
/// value, dump item, dumps.
struct ListItem {
  std::array<Reduction, 3> reductions = {};
  std::uint8_t count = 0;      // 0: a word is no item here
  std::uint8_t lastState = 0;  // above the list, before the last reduction
};

/// As large as a line of the processor's cache, and on one: a step of the parse touches one.
struct alignas(64) ParserState {
  std::array<std::uint8_t, kColumns> shifts = {};      // by token: the next state
  std::array<std::uint8_t, kNonterminals> gotos = {};  // by left side: the state after a reduction
  Reduction reduction;
  bool looksAhead = false;  // whether the next token decides anything
  ListItem item;
};

/// Room for more states than the grammar has.
struct ParseTables {
  std::array<ParserState, 64> states = {};
  int conflicts = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TABLES_H_
