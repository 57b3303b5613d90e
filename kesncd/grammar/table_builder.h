// Computes parse tables from rules, while the library is compiled: an LR(0) automaton, checked with
// the tokens that can follow each left side. `conflicts` counts the states where reducing whenever
// no shift fits would be wrong, so that the compiler refuses rules that need more.
#ifndef KESNCD_GRAMMAR_TABLE_BUILDER_H_
#define KESNCD_GRAMMAR_TABLE_BUILDER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kesncd/grammar/grammar.h"
#include "kesncd/grammar/tables.h"
#include "kesncd/grammar/token_sets.h"

namespace orsa::kesncd {

/// Builds the tables; rule 0 is the one that accepts. Call Build once. All of it runs in the
/// compiler, where a wrong index is an error of the build.
class TableBuilder {
 public:
  constexpr explicit TableBuilder(std::span<const Rule> rules) : rules_(rules), sets_(rules) {}

  constexpr ParseTables Build() {
    // State 0: nothing of rule 0 has been read.
    StateOf({{0, 0}});
    // Filling a state may add states, which are filled in their turn.
    for (std::size_t i = 0; i < starts_.size(); ++i) FillState(i);
    // Last, since it follows the transitions of finished states.
    for (std::size_t i = 0; i < starts_.size(); ++i) FindItem(tables_.states[i]);
    return tables_;
  }

 private:
  /// A rule with a mark: `dot` of its right side's symbols have been read.
  struct Item {
    std::size_t rule;
    std::size_t dot;
    constexpr bool operator==(const Item&) const = default;
  };
  // Kept in the order of the rules, so that equal sets compare equal.
  using Items = std::vector<Item>;
  static constexpr int kNoSymbol = -1;

  /// The symbol after the mark.
  constexpr int NextSymbol(const Item& item) const {
    const RightSide& right = rules_[item.rule].right;
    return item.dot < right.size() ? right[item.dot] : kNoSymbol;
  }

  /// Adds the rules that can begin where `items` stand. "kDumps: . kDumps kDumpItem" adds all rules
  /// of kDumps.
  constexpr void Close(Items& items) const {
    // Each left side once, or the closure would have no end.
    std::array<bool, kNonterminals> added = {};
    for (std::size_t i = 0; i < items.size(); ++i) {
      const int symbol = NextSymbol(items[i]);
      if (symbol < kFirstNonterminal) continue;
      bool& done = added[static_cast<std::size_t>(symbol - kFirstNonterminal)];
      for (std::size_t rule = 0; rule < rules_.size() && !done; ++rule) {
        if (rules_[rule].left == symbol) items.push_back({rule, 0});
      }
      done = true;
    }
  }

  // The items with the mark moved over a symbol.
  constexpr Items After(const Items& items, int symbol) const {
    Items moved;
    for (const Item& item : items) {
      if (NextSymbol(item) == symbol) moved.push_back({item.rule, item.dot + 1});
    }
    return moved;
  }

  /// The state that begins with these items, a new one if there is none yet. States are few, so a
  /// search from the first one will do.
  constexpr std::uint8_t StateOf(const Items& start) {
    std::size_t state = 0;
    while (state < starts_.size() && starts_[state] != start) ++state;
    if (state == starts_.size()) starts_.push_back(start);
    return static_cast<std::uint8_t>(state);
  }

  // `state` stays where it is: the tables are of a fixed size.
  constexpr void FillState(std::size_t index) {
    ParserState& state = tables_.states[index];
    state.shifts.fill(kNoState);
    state.gotos.fill(kNoState);
    Items items = starts_[index];
    Close(items);
    // A rule read to its end reduces; a token shifts; a left side is where a reduction goes on.
    for (const Item& item : items) {
      const int symbol = NextSymbol(item);
      if (symbol == kNoSymbol) {
        AddReduction(state, item.rule);
      } else if (symbol < kFirstNonterminal) {
        state.shifts[static_cast<std::size_t>(ColumnOf(symbol))] = StateOf(After(items, symbol));
        state.looksAhead = true;
      } else {
        state.gotos[static_cast<std::size_t>(symbol - kFirstNonterminal)] =
            StateOf(After(items, symbol));
      }
    }
    CountConflict(state);
  }

  // Rule 0 does not reduce: at the end of the input its file is accepted.
  constexpr void AddReduction(ParserState& state, std::size_t rule) {
    if (rule == 0) {
      state.shifts[static_cast<std::size_t>(ColumnOf(kEndOfInput))] = kAccept;
      state.looksAhead = true;
      return;
    }
    // Two rules at their ends: which one to take would need the token.
    if (state.reduction.rule != kNoRule) ++tables_.conflicts;
    const RightSide& right = rules_[rule].right;
    state.reduction = {.rule = static_cast<std::uint8_t>(rule),
                       .length = static_cast<std::uint8_t>(right.size()),
                       .left = static_cast<std::uint8_t>(rules_[rule].left - kFirstNonterminal),
                       .startsWithToken = right.size() > 0 && right[0] < kFirstNonterminal,
                       .action = rules_[rule].action};
  }

  /// Follows a word through the reductions that it sets off, if they are those of a list's item:
  /// rules of one symbol, then the one that lengthens the list. The state is where that list has
  /// been read, so this one leads back to it. At most three reductions: value, dump item, list.
  constexpr void FindItem(ParserState& state) const {
    ListItem item;
    std::uint8_t next = state.shifts[static_cast<std::size_t>(ColumnOf(kWord))];
    while (next != kNoState && item.count < item.reductions.size()) {
      const ParserState& above = tables_.states[next];
      // Each reduction must be certain, whatever comes next.
      if (above.looksAhead) return;
      const RightSide& right = rules_[above.reduction.rule].right;
      item.reductions[item.count++] = above.reduction;
      item.lastState = next;
      if (right.size() != 1) {
        // "kDumps: kDumps kDumpItem" lengthens its own list.
        if (right.size() == 2 && right[0] == rules_[above.reduction.rule].left) state.item = item;
        return;
      }
      next = state.gotos[above.reduction.left];
    }
  }

  /// A token that may be shifted must not be able to follow what the state could reduce: it would
  /// be shifted where it asks for the reduction.
  constexpr void CountConflict(const ParserState& state) {
    if (state.reduction.rule == kNoRule) return;
    const auto rule = static_cast<std::size_t>(state.reduction.rule);
    const std::uint32_t follow = sets_.Follow(rules_[rule].left);
    for (std::size_t column = 0; column < state.shifts.size(); ++column) {
      if (state.shifts[column] != kNoState && (follow >> column & 1U) != 0) ++tables_.conflicts;
    }
  }

  // The grammar, which is a constant.
  std::span<const Rule> rules_;
  TokenSets sets_;
  ParseTables tables_;
  std::vector<Items> starts_;  // by state: the items that it begins with
};

/// The tables for rules of which number 0 accepts.
constexpr ParseTables BuildTables(std::span<const Rule> rules) {
  return TableBuilder(rules).Build();
}

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TABLE_BUILDER_H_
