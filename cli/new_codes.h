// The codes of a prepared dump.
//
// Every name of a scope has a code of its own: readers count a code that stands twice in a scope
// twice, or for its first name only. The same code in several scopes stays one. The codes are
// equally long and made of letters that no reader takes for a part of a number or a value, and they
// follow the order of the declarations, which is thereby the order of the signals in a reader's
// maps.
#ifndef KESNCD_CLI_NEW_CODES_H_
#define KESNCD_CLI_NEW_CODES_H_

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "cli/declarations.h"

namespace kesncd_cli {

/// How a variable takes part in the codes of its scope.
struct CodeShare {
  std::uint32_t name = 0;   // the how many-eth name of its code in its scope
  bool isRepeated = false;  // name and code stood in the scope before
};

/// One for each variable.
std::vector<CodeShare> ShareCodes(const Declarations& declarations);

class NewCodes {
 public:
  /// Room for every code of the dump with its further names.
  NewCodes(const Declarations& declarations, const std::vector<CodeShare>& shares);

  /// The code of a variable; its number is given out when it is first asked for.
  std::string_view CodeOf(const DumpVariable& variable, const CodeShare& share);

  /// How many names the dump's code has, and the code of each.
  std::size_t NamesOf(std::uint32_t code) const { return starts_[code + 1] - starts_[code]; }
  std::string_view Code(std::uint32_t code, std::size_t name) const {
    return {texts_[starts_[code] + name].data(), length_};
  }

 private:
  using Text = std::array<char, 8>;

  std::vector<std::size_t> starts_;  // of each code's names in texts_
  std::vector<Text> texts_;
  std::size_t length_ = 0;
  std::uint64_t given_ = 0;
};

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_NEW_CODES_H_
