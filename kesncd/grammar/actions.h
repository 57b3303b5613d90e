// What the rules of a dump do: the time scale, the top module's variables, and their changes.
#ifndef KESNCD_GRAMMAR_ACTIONS_H_
#define KESNCD_GRAMMAR_ACTIONS_H_

#include <cstdint>

#include "kesncd/grammar/tables.h"
#include "kesncd/kesncd.h"
#include "line_readers/code_counts.h"

namespace orsa::kesncd {

/// Changes are gathered by code and belong to `topMod` when WriteCounts has been called. Nothing is
/// pending while a declaration is read, so none is lost when a time scale ends the process. Give
/// each reduction of the parse to Reduce, then call WriteCounts once.
class DumpActions {
 public:
  /// Runs the action of a rule with the values of its symbols. Nearly all of a dump is values, so
  /// their way is the shortest. `values` are those of the rule's right side, from its first symbol
  /// on; valid during the call.
  void Reduce(const Reduction& reduction, const YYSTYPE* values) {
    if (reduction.action == Action::TakeValue) {
      TakeValue(values[0].text);
    } else if (reduction.action != Action::None) {
      Run(reduction.action, values);
    }
  }
  /// Adds the gathered changes to the signals of `topMod`. Also after a parse that was given up.
  void WriteCounts();

 private:
  // All actions but the most frequent one.
  void Run(Action action, const YYSTYPE* values);
  void TakeValue(const char (&word)[sizeof vcdstr]);
  void TakeScalar(const char* word);
  // `code` ends in a NUL.
  void CountChange(const char* code);

  CodeCounts counts_;
  std::uint32_t unsettled_ = 0;  // changes since the counters were last settled
  bool gathering_ = false;       // counts_ knows the signals: no more are declared after a change
};

}  // namespace orsa::kesncd

#endif  // KESNCD_GRAMMAR_ACTIONS_H_
