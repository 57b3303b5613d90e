// A result on its way to standard output, or to a file that appears only when it is complete.
#ifndef KESNCD_CLI_OUTPUT_RESULT_FILE_H_
#define KESNCD_CLI_OUTPUT_RESULT_FILE_H_

#include <string>
#include <string_view>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

class ResultFile : public ByteSink {
 public:
  /// An empty path is standard output. Devices and pipes are written to directly, a file is written
  /// beside its place.
  explicit ResultFile(const std::string& path);
  /// Takes back what was not committed; a file that was there before then keeps its content.
  ~ResultFile() override;

  void Write(std::string_view bytes) override;
  /// Puts the complete file in its place.
  void Commit();

 private:
  [[noreturn]] void Fail(int reason) const;

  const std::string path_;
  std::string beside_;  // empty where the result is written directly
  int file_ = -1;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_RESULT_FILE_H_
