// The rule of dumps that are read in parts: however many there are and wherever they are cut, all
// that is said of the dump is what one reading of it says.
#ifndef KESNCD_TESTS_SUPPORT_PARTED_RULES_H_
#define KESNCD_TESTS_SUPPORT_PARTED_RULES_H_

#include "tests/support/input.h"

namespace support {

/// Reads a dump in parts and throws a Violation where something differs from one reading. The
/// options are the begin and end of a window, and the number of parts; without it several numbers
/// are tried.
void CheckReadingInParts(const Input& input);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_PARTED_RULES_H_
