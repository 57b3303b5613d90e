// Results packed with gzip on their way out: dumps shrink to a tenth, and every reader of dumps
// here takes them packed.
#ifndef KESNCD_CLI_OUTPUT_PACK_H_
#define KESNCD_CLI_OUTPUT_PACK_H_

#include <memory>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// Packs what is written to it, then once Finish. The bytes do not depend on the hour.
class GzipSink : public ByteSink {
 public:
  explicit GzipSink(ByteSink& to);
  ~GzipSink() override;

  void Write(std::string_view bytes) override;
  /// Passes on what is still held back, and the end.
  void Finish();

 private:
  struct State;

  void Pack(std::string_view bytes, bool isEnd);

  ByteSink& to_;
  std::unique_ptr<State> state_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_PACK_H_
