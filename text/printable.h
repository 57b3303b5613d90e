// Texts that may be shown. A dump's names and a user's paths may hold escape sequences, characters
// that turn the reading direction, or no characters at all; none of them may reach a terminal.
#ifndef KESNCD_TEXT_PRINTABLE_H_
#define KESNCD_TEXT_PRINTABLE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd {

/// The first character of a text that is taken for UTF-8.
struct Utf8Character {
  char32_t code = 0;
  std::size_t bytes = 1;
  bool isValid = false;  // else the character is one stray byte
};

/// For a text that is not empty. Never more bytes than the text has. A text in another encoding
/// gives stray bytes.
Utf8Character FirstCharacter(std::string_view text);

/// Whether a character would steer a terminal or the reading direction instead of being shown.
bool IsSteering(char32_t code);

/// The text in valid UTF-8, "?" for each stray byte and each character that steers.
std::string Printable(std::string_view text);

/// The same for a text of several lines, whose ends stay.
std::string PrintableLines(std::string_view text);

/// How many characters a printable text has.
std::size_t CharacterCount(std::string_view text);

/// The text when it has at most `most` characters, else its start and its end with "..." between
/// them. The text must be printable, `most` at least 4.
std::string Shortened(std::string_view text, std::size_t most);

/// Passes a text on to a terminal, printable but with its line ends and tabs. Write as often as you
/// like, then Finish once. The sink that it writes to must outlive it.
class TerminalSink : public ByteSink {
 public:
  explicit TerminalSink(ByteSink& to) : to_(to) {}

  void Write(std::string_view bytes) override;
  /// Passes on what an unfinished character held back.
  void Finish();

 private:
  void Pass(std::string_view text);

  ByteSink& to_;
  std::string held_;  // the start of a character whose rest is still to come
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_PRINTABLE_H_
