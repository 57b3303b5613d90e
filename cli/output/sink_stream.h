// A sink of bytes as a standard stream, for writers of activity formats that take one.
//
// SAIF and Tcl are written with operator<<, hundreds of megabytes of small pieces. A stream of the
// standard library swallows exceptions of its buffer; this one is set up to pass them on.
#ifndef KESNCD_CLI_OUTPUT_SINK_STREAM_H_
#define KESNCD_CLI_OUTPUT_SINK_STREAM_H_

#include <cstdio>
#include <ostream>
#include <streambuf>
#include <string>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Gathers what is written into blocks. The first failure of the sink is thrown by what writes.
/// Calling order: construct, write, Finish. The sink must outlive it, and gets whole blocks of 64
/// KiB. The destructor does not pass the rest on: without Finish the result is incomplete on
/// purpose.
class SinkStream : private std::streambuf, public std::ostream {
 public:
  /// The buffer comes first among the base classes, so it is there when the stream is given it.
  explicit SinkStream(ByteSink& sink) : std::ostream(this), sink_(sink) {
    exceptions(std::ios::badbit);  // without it a failure of the sink would be forgotten
  }

  /// Passes the rest on. Afterwards more may be written, with another Finish after it.
  void Finish() {
    sink_.Write(block_);
    block_.clear();
  }

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 16U;

  // Called by std::ostream for texts, which are most of what is written.
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    block_.append(text, static_cast<std::size_t>(size));
    if (block_.size() >= kBlock) Finish();
    return size;
  }
  /// For single characters, as there is no area of the buffer's own to put them into.
  int overflow(int c) override {
    if (c != EOF) {
      const char character = static_cast<char>(c);
      xsputn(&character, 1);
    }
    return 0;
  }

  ByteSink& sink_;
  // Less than a block between two calls.
  std::string block_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_SINK_STREAM_H_
