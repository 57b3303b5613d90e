// Bytes from a text, in pieces as small as wanted, and bytes into one.
#ifndef KESNCD_TESTS_SUPPORT_TEXT_STREAM_H_
#define KESNCD_TESTS_SUPPORT_TEXT_STREAM_H_

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd {

class TextSource : public ByteSource {
 public:
  explicit TextSource(const std::string& text, std::size_t chunk = SIZE_MAX)
      : text_(text), chunk_(chunk) {}
  std::size_t Read(char* to, std::size_t most) override {
    const std::size_t got = text_.copy(to, std::min(most, chunk_), at_);
    at_ += got;
    return got;
  }

 private:
  const std::string text_;
  const std::size_t chunk_;
  std::size_t at_ = 0;
};

class TextSink : public ByteSink {
 public:
  void Write(std::string_view bytes) override { text += bytes; }
  std::string text;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_TEXT_STREAM_H_
