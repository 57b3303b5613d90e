// Results packed with gzip on their way out: dumps shrink to a tenth, and every reader of dumps
// here takes them packed.
#ifndef KESNCD_CLI_OUTPUT_PACK_H_
#define KESNCD_CLI_OUTPUT_PACK_H_

#include <memory>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Packs what is written to it. The bytes do not depend on the hour. Calling order: construct,
/// Write any number of times, Finish once. What is written without Finish is cut off, and every
/// reader says so. Throws std::bad_alloc; what the sink throws passes through.
class GzipSink : public ByteSink {
 public:
  /// The sink is the caller's and must outlive the packer; it is not ended by Finish.
  explicit GzipSink(ByteSink& to);
  ~GzipSink() override;

  void Write(std::string_view bytes) override;
  /// Passes on what is still held back, and the end.
  void Finish();

 private:
  // zlib's stream and a block of packed bytes, kept out of this header.
  struct State;

  /// Hands bytes to zlib and what comes out of it to the sink; `isEnd` flushes all.
  void Pack(std::string_view bytes, bool isEnd);

  ByteSink& to_;
  std::unique_ptr<State> state_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_PACK_H_
