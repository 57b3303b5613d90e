// The rules of preparing a dump: doing it again changes nothing, `check` has nothing left to say
// that preparing fixes, and every reader finds what the dump said.
#ifndef KESNCD_TESTS_SUPPORT_PREPARE_RULES_H_
#define KESNCD_TESTS_SUPPORT_PREPARE_RULES_H_

#include "tests/support/input.h"

namespace support {

/// Prepares a dump and throws a Violation where a rule is broken. The options are the scope that
/// goes first, the tick of a dump without one, and the begin and end of a window.
void CheckPreparing(const Input& input);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_PREPARE_RULES_H_
