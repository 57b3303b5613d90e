// Words of a text as views into it: nothing is copied or allocated, however long the text is.
#ifndef KESNCD_TEXT_WORDS_H_
#define KESNCD_TEXT_WORDS_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// Takes the first word off `text`, words standing between runs of the characters of `delims`.
/// Empty when there is none left. "a  b" with delims " " gives "a" and leaves "  b": the delimiters
/// after a word stay until the next call.
std::string_view TakeWord(std::string_view& text, std::string_view delims);

/// The first `Most` words of `text`; empty where it has fewer.
template <std::size_t Most>
std::array<std::string_view, Most> FirstWords(std::string_view text, std::string_view delims) {
  std::array<std::string_view, Most> words;
  for (std::string_view& word : words) word = TakeWord(text, delims);
  return words;
}

/// A copy of `text` with each "/" turned into "_": how flat names write a path.
std::string SlashesFlattened(std::string_view text);

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_WORDS_H_
