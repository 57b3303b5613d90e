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

/// Bytes that can be read anywhere; of the text that it is given, which has to outlive it.
class TextFile : public ByteFile {
 public:
  explicit TextFile(const std::string& text) : text_(text) {}
  std::uint64_t size() const override { return text_.size(); }
  std::size_t ReadAt(std::uint64_t offset, char* to, std::size_t most) override {
    return offset < text_.size() ? text_.copy(to, most, offset) : 0;
  }

 private:
  const std::string& text_;
};

class TextSink : public ByteSink {
 public:
  void Write(std::string_view bytes) override { text += bytes; }
  std::string text;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_TEXT_STREAM_H_
