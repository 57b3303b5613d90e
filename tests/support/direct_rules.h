// The rules of counting a dump directly: the figures are those that a host's reader finds in the
// prepared dump, whichever lines go through the fast scan.
#ifndef KESNCD_TESTS_SUPPORT_DIRECT_RULES_H_
#define KESNCD_TESTS_SUPPORT_DIRECT_RULES_H_

#include "tests/support/input.h"

namespace support {

/// Counts a dump directly and throws a Violation where a rule is broken. The options are the begin
/// and end of a window.
void CheckCountingDirectly(const Input& input);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_DIRECT_RULES_H_
