// What every fuzz target defines. fuzz/entry.cc hands libFuzzer's inputs to it.
#ifndef KESNCD_FUZZ_TARGET_H_
#define KESNCD_FUZZ_TARGET_H_

#include <string_view>

/// Judges what the library makes of an input; throws support::Violation where a rule is broken.
void CheckInput(std::string_view bytes);

#endif  // KESNCD_FUZZ_TARGET_H_
