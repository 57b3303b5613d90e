// The tokens that can follow what a left side stands for.
#ifndef KESNCD_GRAMMAR_TOKEN_SETS_H_
#define KESNCD_GRAMMAR_TOKEN_SETS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "kesncd/grammar/tables.h"

namespace orsa::kesncd {

/// Sets of tokens as bits by column, grown over the rules until nothing is missing. Only for the
/// check on conflicts; the parser itself needs none of it.
class TokenSets {
 public:
  // The file is followed by the end of the input. Each round adds what the last one made known;
  // when a round adds nothing, all is found.
  constexpr explicit TokenSets(std::span<const Rule> rules) {
    follow_[0] = Bit(kEndOfInput);
    for (bool grown = true; grown;) {
      grown = false;
      for (const Rule& rule : rules) grown = GrowFirst(rule) || GrowFollow(rule) || grown;
    }
  }

  // A column for each token, and kEmpty beyond them.
  static constexpr std::uint32_t Bit(int token) { return 1U << ColumnOf(token); }
  constexpr std::uint32_t Follow(Nonterminal left) const { return follow_[Index(left)]; }

 private:
  static constexpr std::uint32_t kEmpty = 1U << 31;  // "can be empty", in first_

  static constexpr std::size_t Index(int symbol) {
    return static_cast<std::size_t>(symbol - kFirstNonterminal);
  }
  // Adds to a set; returns whether anything was new.
  static constexpr bool Grow(std::uint32_t& set, std::uint32_t more) {
    const bool grown = (set | more) != set;
    set |= more;
    return grown;
  }

  // The tokens that a symbol can begin with; of a token, itself.
  constexpr std::uint32_t First(int symbol) const {
    return symbol < kFirstNonterminal ? Bit(symbol) : first_[Index(symbol)];
  }

  /// The tokens that can come at a point: those of `symbol`, and of what follows if it is empty.
  constexpr std::uint32_t Before(int symbol, std::uint32_t rest) const {
    const std::uint32_t first = First(symbol);
    return (first & kEmpty) == 0 ? first : (first & ~kEmpty) | rest;
  }

  // From the right: what can begin the rest of a rule after each symbol.
  constexpr bool GrowFirst(const Rule& rule) {
    std::uint32_t tokens = kEmpty;
    for (std::size_t i = rule.right.size(); i-- > 0;) tokens = Before(rule.right[i], tokens);
    return Grow(first_[Index(rule.left)], tokens);
  }

  // What follows the left side follows a symbol at the end of the right side; elsewhere it is what
  // the symbol after it begins with.
  constexpr bool GrowFollow(const Rule& rule) {
    bool grown = false;
    std::uint32_t tokens = Follow(rule.left);
    for (std::size_t i = rule.right.size(); i-- > 0;) {
      const int symbol = rule.right[i];
      if (symbol >= kFirstNonterminal) grown = Grow(follow_[Index(symbol)], tokens) || grown;
      tokens = Before(symbol, tokens);
    }
    return grown;
  }

  // Both sets are kept by left side.
  std::array<std::uint32_t, kNonterminals> first_ = {};
  std::array<std::uint32_t, kNonterminals> follow_ = {};
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_TOKEN_SETS_H_
