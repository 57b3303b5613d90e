// Name matching against the plain walk. The first line is the dump's name, the rest the design's.
#include "fuzz/target.h"
#include "tests/support/plain_names.h"
#include "tests/support/require.h"

void CheckInput(std::string_view bytes) {
  const std::string input(bytes);
  const std::size_t line = input.find('\n');
  if (line == std::string::npos) return;
  const std::string name = input.substr(0, line);
  const std::string design = input.substr(line + 1);
  for (const bool exact : {false, true}) {
    const bool equal = orsa::kesncd::VmodHier::IsNameEqual(name, design, exact);
    const auto plain = support::PlainlyEqual(name, design, exact);
    support::Require(!plain || *plain == equal,
                     std::string("'") + name + "' and '" + design + "' match");
    support::Require(!exact || !equal || orsa::kesncd::VmodHier::IsNameEqual(name, design, false),
                     "what matches exactly matches");
  }
}
