// libFuzzer's way into a target: a broken rule ends the process, which keeps the input.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/target.h"
#include "tests/support/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    CheckInput({reinterpret_cast<const char*>(data), size});
  } catch (const support::Violation& violation) {
    std::fprintf(stderr, "fuzz target: %s\n", violation.what());
    std::abort();
  }
  return 0;
}
