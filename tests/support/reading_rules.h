// What has to hold for every dump, however it is read: for tests of cases and for fuzz targets.
#ifndef KESNCD_TESTS_SUPPORT_READING_RULES_H_
#define KESNCD_TESTS_SUPPORT_READING_RULES_H_

#include "tests/support/input.h"

namespace support {

/// Counts a dump directly and throws a Violation where the figures are not those that a host's
/// reader finds in the prepared dump, whichever lines go through the fast scan. The options are the
/// begin and end of a window.
void CheckCountingDirectly(const Input& input);

/// Prepares a dump and throws a Violation where doing it again changes something, where `check` has
/// something left to say that preparing fixes, or where a reader does not find what the dump said.
/// The options are the scope that goes first, the tick of a dump without one, and the begin and end
/// of a window.
void CheckPreparing(const Input& input);

/// Reads a dump in parts, wherever they are cut, and throws a Violation where something differs
/// from one reading. The options are the begin and end of a window, and the number of parts;
/// without it several numbers are tried.
void CheckReadingInParts(const Input& input);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_READING_RULES_H_
