// A dump read in parts, by threads and as by jobs whose results are merged, against one reading of
// it. The options are the begin and end of a window, and the number of parts.
#include "fuzz/target.h"
#include "tests/support/reading_rules.h"

void CheckInput(std::string_view bytes) {
  support::CheckReadingInParts(support::Input(bytes));
}
