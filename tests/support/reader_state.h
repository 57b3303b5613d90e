// The reader state as at load and as a text, and a text as an open stream, for tests and fuzz
// targets.
#ifndef KESNCD_TESTS_SUPPORT_READER_STATE_H_
#define KESNCD_TESTS_SUPPORT_READER_STATE_H_

#include <cstdio>
#include <string>

namespace orsa::kesncd {

/// Puts the reader state back to its load values.
void ResetReaderState();

/// "name=count name=count ..." of topMod's signals.
std::string TopModCounts();

/// An open stream over a text, closed with the object.
class TextStream {
 public:
  explicit TextStream(const std::string& text);
  ~TextStream();
  TextStream(const TextStream&) = delete;
  TextStream& operator=(const TextStream&) = delete;

  operator std::FILE*() const { return file_; }

 private:
  std::string text_;
  std::FILE* file_;
};

}  // namespace orsa::kesncd

namespace support {

/// The reader state that a run leaves, as a text to compare.
std::string StateText();

/// 1000 / period in MHz, as the figures are defined.
double PlainFrequency(int changes);
/// Equal, or both not a number.
bool Same(double a, double b);

}  // namespace support

#endif  // KESNCD_TESTS_SUPPORT_READER_STATE_H_
