// The codes of a prepared dump.
//
// Every name of a scope has a code of its own: readers count a code that stands twice in a scope
// twice, or for its first name only. The same code in several scopes stays one. The codes are
// equally long and made of letters that no reader takes for a part of a number or a value, and they
// follow the order of the declarations, which is thereby the order of the signals in a reader's
// maps.
#ifndef KESNCD_FREE_FORMAT_PREPARE_NEW_CODES_H_
#define KESNCD_FREE_FORMAT_PREPARE_NEW_CODES_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vcd/declarations.h"

namespace orsa::kesncd {

/// How a variable takes part in the codes of its scope. Made by ShareCodes, in the order of the
/// declarations of each scope.
struct CodeShare {
  std::uint32_t name = 0;   // 0 for the first name of its code in its scope, 1 for the second, ...
  bool isRepeated = false;  // name and code stood in the scope before
  bool isLeftOut = false;   // one name too many
};

/// How many names of one code a scope may have in a prepared dump. Each change is written once a
/// name, so without a bound a short dump with very many names of a clock would become a huge one.
inline constexpr std::uint32_t kMostNames = 32;

/// The shares of all variables, by their indices.
std::vector<CodeShare> ShareCodes(const Declarations& declarations);

/// Construct it, call CodeOf for every variable that the header declares, then First and Further.
class NewCodes {
 public:
  /// Room for every code of the dump with its further names.
  NewCodes(const Declarations& declarations, const std::vector<CodeShare>& shares);

  /// The code of a variable. Codes are given out in the order in which they are first asked for,
  /// which is that of the declarations.
  std::string_view CodeOf(const DumpVariable& variable, const CodeShare& share);

  /// Bytes that may be read from the start of a code.
  static constexpr std::size_t kReadAhead = 8;
  // Characters of a code, the same for all.
  std::size_t length() const { return length_; }
  /// The code of the first name that a dump's code has in a scope, and how many more it has.
  const char* First(std::uint32_t code) const { return &first_[code * step_]; }
  // 0 for nearly all codes.
  std::uint32_t FurtherNames(std::uint32_t code) const {
    return isShared_[code] ? further_[code].count : 0;
  }
  /// The code of a further name, from 0 on.
  const char* Further(std::uint32_t code, std::uint32_t name) const {
    return &furtherTexts_[(further_[code].start + name) * step_];
  }

 private:
  // A code's further names lie one after the other.
  struct Range {
    std::uint32_t count = 0;
    std::uint32_t start = 0;
  };

  // What every change of a dump looks up takes little room: large dumps change signals anywhere.
  std::size_t length_ = 1;
  std::size_t step_ = 0;     // from one code's text to the next one's
  std::vector<char> first_;  // texts by the dump's codes
  // Says whether a look into `further_` is worth it.
  std::vector<bool> isShared_;
  std::vector<Range> further_;  // by the dump's codes, of furtherTexts_
  std::vector<char> furtherTexts_;
  // How many codes have been given out.
  std::uint64_t given_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_PREPARE_NEW_CODES_H_
