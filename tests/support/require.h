// What tests and fuzz targets judge by: a rule that does not hold ends the judging of a dump with
// the reason. A test reports it, a fuzz target keeps the dump as a finding.
#ifndef KESNCD_TESTS_SUPPORT_REQUIRE_H_
#define KESNCD_TESTS_SUPPORT_REQUIRE_H_

#include <stdexcept>
#include <string>
#include <type_traits>

namespace support {

struct Violation : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Throws a Violation unless the rule holds. A message that costs something to build, because it
/// quotes a dump, is given as a function: fuzz targets come here a thousand times a second.
template <class Message>
void Require(bool holds, const Message& message) {
  if (holds) return;
  if constexpr (std::is_invocable_v<const Message&>) {
    throw Violation(message());
  } else {
    throw Violation(message);
  }
}

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_REQUIRE_H_
