// How often something was met, with the first time as the example.
#ifndef KESNCD_VCD_TALLY_H_
#define KESNCD_VCD_TALLY_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Add or Join in the order of the dump, so that the example is the first one of all.
struct Tally {
  std::uint64_t count = 0;
  std::uint64_t line = 0;  // of the example
  std::string example;

  void Add(std::uint64_t atLine, std::string_view what) {
    // Counted alone after the first time: a hostile dump must not cost a text for each.
    if (count++ > 0) return;
    line = atLine;
    example = what.substr(0, kShown);
  }
  /// Adds what was met in the stretch of a dump that comes next, whose lines count from its own
  /// first one.
  void Join(const Tally& next, std::uint64_t linesBefore) {
    if (next.count == 0) return;
    if (count == 0) {
      line = next.line + linesBefore;
      example = next.example;
    }
    count += next.count;
  }
  explicit operator bool() const { return count > 0; }

 private:
  // Bytes of an example. The cut may split a character, so it is shown as printable text only.
  static constexpr std::size_t kShown = 100;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_VCD_TALLY_H_
