// What tests and fuzz targets share: the reader state as at load, and a text as an open stream.
#ifndef KESNCD_TESTS_READER_STATE_H_
#define KESNCD_TESTS_READER_STATE_H_

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

#endif  // KESNCD_TESTS_READER_STATE_H_
