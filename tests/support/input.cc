// Cuts a fuzz target's input into its text and its options.
#include "tests/support/input.h"

#include <algorithm>

namespace support {

Input::Input(std::string_view bytes) {
  const std::size_t mark = bytes.rfind('\xFF');
  text = bytes.substr(0, mark);
  if (mark != std::string_view::npos) options = Lines(bytes.substr(mark + 1));
}

std::string Input::Option(std::size_t number, const std::string& otherwise) const {
  return number < options.size() ? options[number] : otherwise;
}

std::set<std::string> Input::OptionsFrom(std::size_t number) const {
  const auto first = std::min(number, options.size());
  return {options.begin() + static_cast<std::ptrdiff_t>(first), options.end()};
}

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace support
