// A dump counted directly against its prepared form. The options are the begin and end of a window.
#include "fuzz/target.h"
#include "tests/support/reading_rules.h"

void CheckInput(std::string_view bytes) {
  support::CheckCountingDirectly(support::Input(bytes));
}
