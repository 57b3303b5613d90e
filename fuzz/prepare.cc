// The rewrite of a dump against its rules. The options are the scope that goes first, the tick of a
// dump without one, and the begin and end of a window.
#include "tests/support/reading_rules.h"

#include "fuzz/target.h"

void CheckInput(std::string_view bytes) {
  support::CheckPreparing(support::Input(bytes));
}
