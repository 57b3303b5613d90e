// A sink of bytes as a standard stream, for writers of activity formats that take one.
#ifndef KESNCD_CLI_OUTPUT_SINK_STREAM_H_
#define KESNCD_CLI_OUTPUT_SINK_STREAM_H_

#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Gathers what is written into blocks. The first failure of the sink is thrown by what writes.
/// Calling order: construct, write, Finish.
class SinkStream : private std::streambuf, public std::ostream {
 public:
  explicit SinkStream(ByteSink& sink) : std::ostream(this), sink_(sink) {
    exceptions(std::ios::badbit);  // without it a failure of the sink would be forgotten
  }

  /// Passes the rest on.
  void Finish() {
    sink_.Write(block_);
    block_.clear();
  }

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 16U;

  std::streamsize xsputn(const char* text, std::streamsize size) override {
    block_.append(text, static_cast<std::size_t>(size));
    if (block_.size() >= kBlock) Finish();
    return size;
  }
  int overflow(int c) override {
    if (c != EOF) {
      const char character = static_cast<char>(c);
      xsputn(&character, 1);
    }
    return 0;
  }

  ByteSink& sink_;
  std::string block_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_SINK_STREAM_H_
