// What sources of packed dumps share: blocks of packed bytes, and how they complain.
//
// An unpacker derives from PackedSource, takes packed bytes by NextBlock and gives plain ones by
// Read. All agree on these points: files packed one after another are one file, a file that ends
// inside packed bytes is an error (a dump that was copied half), and packed bytes that are wrong
// are one.
#ifndef KESNCD_CLI_INPUT_PACKED_SOURCE_H_
#define KESNCD_CLI_INPUT_PACKED_SOURCE_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/byte_stream.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

/// For deriving only. Owns the packed source; `name` is what messages call the dump.
class PackedSource : public ByteSource {
 protected:
  // 128 KiB: enough to keep a disk busy, little beside what unpackers need themselves.
  static constexpr std::size_t kBlock = std::size_t{1} << 17;

  PackedSource(std::unique_ptr<ByteSource> packed, std::string name)
      : packed_(std::move(packed)), name_(std::move(name)), block_(kBlock) {}

  /// The next packed bytes; empty at their end. The view is good until the next call. Never empty
  /// before the end.
  std::string_view NextBlock() {
    return {block_.data(), packed_->Read(block_.data(), block_.size())};
  }
  /// Each throws Failure with Unusable, "sim.vcd.gz: its packed bytes are corrupt".
  [[noreturn]] void Fail(const std::string& why) const {
    throw Failure(FailureKind::Unusable, name_ + ": " + why);
  }
  [[noreturn]] void FailCorrupt() const { Fail("its packed bytes are corrupt"); }
  [[noreturn]] void FailCut() const { Fail("it is cut off inside its packed bytes"); }

 private:
  const std::unique_ptr<ByteSource> packed_;
  const std::string name_;
  std::vector<char> block_;  // read into again and again
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_PACKED_SOURCE_H_
