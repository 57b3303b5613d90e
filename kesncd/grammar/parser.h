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

template <class Actions>
class Parser {
 public:
  Parser(const ParseTables& tables, Actions& actions) : tables_(tables), actions_(actions) {}

  /// Parses the lexer's tokens; false when the parse is given up.
  bool Parse() {
    yynerrs = yyerrflag = 0;
    yychar = kNoToken;
    MoveTo(0);
    Enter(0);
    for (;;) {
      const ParserState& state = StateAt(state_);
      if (state.looksAhead) {
        if (yychar == kNoToken) yychar = yylex();
        if (TakesItem(state)) {
          TakeItem(state.item);
          continue;
        }
        const int next = ShiftOf(state, yychar);
        if (next != kNoState) {
          if (next == kAccept || !Shift(next)) return next == kAccept;
          continue;
        }
      }
      if (!ReduceOrRecover(state.reduction)) return false;
    }
  }

 private:
  static constexpr int kNoToken = -1;
  static constexpr int kRecovering = 3;  // shifts until an error is reported again
  static constexpr std::ptrdiff_t kDeepest = std::size(yy_yys);

  const ParserState& StateAt(int state) const {
    return tables_.states[static_cast<std::size_t>(state)];
  }
  static int ShiftOf(const ParserState& state, int token) {
    return state.shifts[static_cast<std::size_t>(ColumnOf(token))];
  }

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

  void Enter(int state) {
    state_ = state;
    *yyps = yystate = state;
  }

  bool Push(int state) {
    if (top_ + 1 == kDeepest) {
      yyerror("yacc stack overflow");
      return false;
    }
    MoveTo(top_ + 1);
    Enter(state);
    return true;
  }

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
    CopyValue(yyval.text, yylval.text);
    yyps[1] = item.lastState;
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
    const YYSTYPE* values = yypv + 1;
    if (reduction.startsWithToken) CopyValue(yyval.text, values->text);
    actions_.Reduce(reduction, values);
    return Push(StateAt(*yyps).gotos[static_cast<std::size_t>(reduction.left)]);
  }

  /// Handles a token that does not fit: states are dropped until one can go on with the error
  /// token. False when none can. While recovering, tokens are dropped in silence.
  bool Recover() {
    if (yyerrflag == kRecovering) {
      const bool atEnd = yychar == kEndOfInput;
      yychar = kNoToken;
      return !atEnd;
    }
    if (yyerrflag == 0) {
      yyerror("syntax error");
      ++yynerrs;
    }
    yyerrflag = kRecovering;
    while (ShiftOf(StateAt(*yyps), kErrorToken) == kNoState) {
      if (top_ == 0) return false;
      MoveTo(top_ - 1);
    }
    return Push(ShiftOf(StateAt(*yyps), kErrorToken));
  }

  const ParseTables& tables_;
  Actions& actions_;
  std::ptrdiff_t top_ = 0;  // index of the top in both stacks
  int state_ = 0;           // the state there
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_PARSER_H_
