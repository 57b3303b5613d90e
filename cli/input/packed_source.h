// What sources of packed dumps share: blocks of packed bytes, and how they complain.
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

class PackedSource : public ByteSource {
 protected:
  static constexpr std::size_t kBlock = std::size_t{1} << 17;

  PackedSource(std::unique_ptr<ByteSource> packed, std::string name)
      : packed_(std::move(packed)), name_(std::move(name)), block_(kBlock) {}

  /// The next packed bytes; empty at their end.
  std::string_view NextBlock() {
    return {block_.data(), packed_->Read(block_.data(), block_.size())};
  }
  [[noreturn]] void Fail(const std::string& why) const {
    throw Failure(FailureKind::Unusable, name_ + ": " + why);
  }
  [[noreturn]] void FailDamaged() const { Fail("its packed bytes are damaged"); }
  [[noreturn]] void FailCut() const { Fail("it is cut off inside its packed bytes"); }

 private:
  const std::unique_ptr<ByteSource> packed_;
  const std::string name_;
  std::vector<char> block_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_PACKED_SOURCE_H_
