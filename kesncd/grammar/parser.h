// The parser: a shift-reduce automaton with one token of look-ahead, on the exported variables.
//
// It runs any grammar whose tables fit and knows nothing of dumps: what a rule means is the
// business of its `Actions`, whose Reduce(rule, values) is called with the values of the rule's
// symbols before they leave the stack.
#ifndef KESNCD_GRAMMAR_PARSER_H_
#define KESNCD_GRAMMAR_PARSER_H_

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "kesncd/grammar/tables.h"
#include "kesncd/grammar/token_value.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Construct it and Parse once. Its state is in the exported variables, where hosts may look at it
/// between two tokens.
template <class Actions>
class Parser {
 public:
  Parser(const ParseTables& tables, Actions& actions) : tables_(tables), actions_(actions) {}

  /// Parses the lexer's tokens; false when the parse is given up.
  bool Parse() {
    // As if nothing had been parsed before; a look-ahead token of an earlier parse is dropped.
    yynerrs = yyerrflag = 0;
    yychar = kNoToken;
    MoveTo(0);
    Enter(0);
    for (;;) {
      const ParserState& state = StateAt(state_);
      // A state that does not look ahead reduces before the next word is read.
      if (state.looksAhead) {
        if (yychar == kNoToken) yychar = yylex();
        // The short way for a list's items.
        if (TakesItem(state)) {
          TakeItem(state.item);
          continue;
        }
        // The plain way: shift if the token fits, accept at the end.
        const int next = ShiftOf(state, yychar);
        if (next != kNoState) {
          if (next == kAccept || !Shift(next)) return next == kAccept;
          continue;
        }
      }
      // Nothing fits: reduce, or the token is an error.
      if (!ReduceOrRecover(state.reduction)) return false;
    }
  }

 private:
  static constexpr int kNoToken = -1;
  static constexpr int kRecovering = 3;  // shifts until an error is reported again
  static constexpr std::ptrdiff_t kDeepest = std::size(yy_yys);

  // States are numbers below 64.
  const ParserState& StateAt(int state) const {
    return tables_.states[static_cast<std::size_t>(state)];
  }
  static int ShiftOf(const ParserState& state, int token) {
    return state.shifts[static_cast<std::size_t>(ColumnOf(token))];
  }

  // Only where the stack would have had room for it.
  bool TakesItem(const ParserState& state) const {
    return yychar == kWord && state.item.count > 0 && top_ + 1 < kDeepest;
  }
  bool ReduceOrRecover(const Reduction& reduction) {
    return reduction.rule == kNoRule ? Recover() : Reduce(reduction);
  }

  /// Makes an entry the top of both stacks.
  void MoveTo(std::ptrdiff_t entry) {
    top_ = entry;
    yyps = yys + entry;
    yypv = yyv + entry;
  }

  // The variables show the state as the plain way leaves it.
  void Enter(int state) {
    state_ = state;
    *yyps = yystate = state;
  }

  // False when the stack is full, which ends the parse. No dump gets there: its lists are
  // left-recursive.
  bool Push(int state) {
    if (top_ + 1 == kDeepest) {
      yyerror("yacc stack overflow");
      return false;
    }
    MoveTo(top_ + 1);
    Enter(state);
    return true;
  }

  // The token has its place on the stack, so the next one is to be read.
  bool Shift(int state) {
    if (!Push(state)) return false;
    CopyValue(yypv->text, yylval.text);
    yychar = kNoToken;
    if (yyerrflag > 0) --yyerrflag;
    return true;
  }

  /// Shifts a word and does the reductions that make it an item of the list below: all at once,
  /// since a dump is little else, and with what they would leave in the variables.
  void TakeItem(const ListItem& item) {
    yychar = kNoToken;
    CopyValue(yypv[1].text, yylval.text);
    // The stacks hold above their top what Shift would leave there.
    CopyValue(yyval.text, yylval.text);
    yyps[1] = item.lastState;
    // All but the last see the word where it was shifted, the last one the list before it.
    const std::uint8_t last = item.count - 1;
    for (std::uint8_t i = 0; i < last; ++i) actions_.Reduce(item.reductions[i], yypv + 1);
    actions_.Reduce(item.reductions[last], yypv);
    yytmp = item.reductions[last].rule;
  }

  /// Drops a rule's symbols. All changes pass through rules of one and two: as constants these
  /// lengths cost the processor no wait for the table.
  void Drop(int length) {
    if (length == 1) {
      MoveTo(top_ - 1);
    } else if (length == 2) {
      MoveTo(top_ - 2);
    } else {
      MoveTo(top_ - length);
    }
  }

  /// Replaces a rule's symbols by its left side. The value of the first symbol stays in its place
  /// on the stack and becomes that of the left side.
  bool Reduce(const Reduction& reduction) {
    yytmp = reduction.rule;
    Drop(reduction.length);
    // The rule's symbols lie above the top now, but are still there.
    const YYSTYPE* values = yypv + 1;
    // yyval is what the rule's first token was, as hosts see it.
    if (reduction.startsWithToken) CopyValue(yyval.text, values->text);
    actions_.Reduce(reduction, values);
    return Push(StateAt(*yyps).gotos[static_cast<std::size_t>(reduction.left)]);
  }

  /// Handles a token that does not fit: states are dropped until one can go on with the error
  /// token. False when none can. While recovering, tokens are dropped in silence.
  bool Recover() {
    // A second error in a row drops the token; at the end of the input the parse is over.
    if (yyerrflag == kRecovering) {
      const bool atEnd = yychar == kEndOfInput;
      yychar = kNoToken;
      return !atEnd;
    }
    // Errors shortly after one another are reported once.
    if (yyerrflag == 0) {
      yyerror("syntax error");
      ++yynerrs;
    }
    yyerrflag = kRecovering;
    // Rules without the error token, as a dump's, end the parse here.
    while (ShiftOf(StateAt(*yyps), kErrorToken) == kNoState) {
      if (top_ == 0) return false;
      MoveTo(top_ - 1);
    }
    return Push(ShiftOf(StateAt(*yyps), kErrorToken));
  }

  // Tables and actions must outlive the parse.
  const ParseTables& tables_;
  Actions& actions_;
  std::ptrdiff_t top_ = 0;  // index of the top in both stacks
  int state_ = 0;           // the state there
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_PARSER_H_
