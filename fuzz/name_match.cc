// Name matching against the plain walk. The first line is the dump's name, the rest the design's.
#include "fuzz/plain_names.h"
#include "fuzz/support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t line = input.find('\n');
  if (line == std::string::npos) return -1;
  const std::string name = input.substr(0, line);
  const std::string design = input.substr(line + 1);
  for (const bool exact : {false, true}) {
    const bool equal = orsa::kesncd::VmodHier::IsNameEqual(name, design, exact);
    const auto plain = fuzz::PlainlyEqual(name, design, exact);
    fuzz::Require(!plain || *plain == equal,
                  std::string("'") + name + "' and '" + design + "' match");
    fuzz::Require(!exact || !equal || orsa::kesncd::VmodHier::IsNameEqual(name, design, false),
                  "what matches exactly matches");
  }
  return 0;
}
