// The order of names for a reader: numbers in them count as numbers, so that bit 10 of a bus comes
// after bit 9.
#ifndef KESNCD_NAMES_NAME_ORDER_H_
#define KESNCD_NAMES_NAME_ORDER_H_

#include <string_view>

namespace orsa::kesncd {

/// Whether `a` is listed before `b`; names of upper case come before those of lower case. A strict
/// order: only equal names are neither before nor after one another.
bool IsNameBefore(std::string_view a, std::string_view b);

}  // namespace orsa::kesncd

#endif  // KESNCD_NAMES_NAME_ORDER_H_
