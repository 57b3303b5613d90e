// Cutting views into words, and the flat form of a path.
#include "text/words.h"

#include <algorithm>

namespace orsa::kesncd {

std::string_view TakeWord(std::string_view& text, std::string_view delims) {
  text.remove_prefix(std::min(text.find_first_not_of(delims), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(delims));
  text.remove_prefix(word.size());
  return word;
}

std::string SlashesFlattened(std::string_view text) {
  // "tb/dut" and "tb_dut" give the same flat name; readers that ask by flat name accept that.
  std::string flat(text);
  std::replace(flat.begin(), flat.end(), '/', '_');
  return flat;
}

}  // namespace orsa::kesncd
