// How far the reading of a dump has come, shown while it goes on.
#ifndef KESNCD_CLI_PROGRESS_H_
#define KESNCD_CLI_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "cli/byte_stream.h"

namespace kesncd_cli {

/// "37 %, 812 MB/s, 3 s left"; without a total "1400 MB, 812 MB/s".
std::string ProgressText(std::uint64_t done, std::uint64_t total, double seconds);

/// Passes a source's bytes on. When half a second has gone, it shows on standard error how far it
/// is, on one line that it takes back at the end.
class ShownSource : public ByteSource {
 public:
  /// Messages call the source `name`; a total of 0 is not known.
  ShownSource(std::unique_ptr<ByteSource> source, std::string name, std::uint64_t total);
  ~ShownSource() override;

  std::size_t Read(char* to, std::size_t most) override;

 private:
  using Clock = std::chrono::steady_clock;
  void Show(const std::string& text);

  const std::unique_ptr<ByteSource> source_;
  const std::string name_;
  const std::uint64_t total_;
  const Clock::time_point start_ = Clock::now();
  Clock::time_point next_;
  std::uint64_t done_ = 0;
  std::size_t shown_ = 0;  // columns
};

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_PROGRESS_H_
