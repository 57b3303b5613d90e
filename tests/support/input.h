// An input of a fuzz target as a person can write it: a text, and after its last byte 0xFF the
// options of the target, a line each. Most inputs are plain dumps without any.
#ifndef KESNCD_TESTS_SUPPORT_INPUT_H_
#define KESNCD_TESTS_SUPPORT_INPUT_H_

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace support {

struct Input {
  explicit Input(std::string_view bytes);

  /// The option of that number, or `otherwise`.
  std::string Option(std::size_t number, const std::string& otherwise = "") const;
  /// The options from a number on.
  std::set<std::string> OptionsFrom(std::size_t number) const;

  std::string text;
  std::vector<std::string> options;
};

/// What follows a dump's text where it is to be counted whole, from a time on, in a window and up
/// to a time.
inline constexpr const char* kWindows[] = {"",
                                           "\xFF"
                                           "10ns\n",
                                           "\xFF"
                                           "1ns\n20ns\n",
                                           "\xFF\n7ps\n"};

/// The lines of a text, without their ends.
std::vector<std::string> Lines(std::string_view text);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_INPUT_H_
