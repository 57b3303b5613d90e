// A look at the beginning of a dump before a run: what it declares, and whether the library's
// readers would count it otherwise than `kesncd prepare` writes it.
//
// The declarations are seen whole, of the body the first lines only: what a simulator does in its
// first quarter of a megabyte it does throughout.
#ifndef KESNCD_FREE_FORMAT_DUMP_LOOK_H_
#define KESNCD_FREE_FORMAT_DUMP_LOOK_H_

#include <string>
#include <vector>

#include "free_format/dump_findings.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Which readers the figures are to come from.
enum class Reader { Lines, Grammar };

struct DumpLook {
  Declarations declarations;
  std::vector<Finding> reasons;  // to read the dump through prepare, the most harmful first
};

/// Keeps what is read of a source, so that it can be read again.
class KeptSource : public ByteSource {
 public:
  explicit KeptSource(ByteSource& source) : source_(source) {}

  std::size_t Read(char* to, std::size_t most) override;
  /// The next block, cut behind its last line, is the last one.
  void EndSoon() { endsSoon_ = true; }
  /// Whether the source itself came to its end.
  bool isWhole() const { return isWhole_; }
  std::string TakeKept() { return std::move(kept_); }

 private:
  ByteSource& source_;
  std::string kept_;
  bool endsSoon_ = false;
  bool hasEnded_ = false;
  bool isWhole_ = false;
};

/// Throws Failure with Unusable for what is no VCD file or declares no variable.
DumpLook LookAtDump(KeptSource& in, const std::string& name, Reader reader);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_DUMP_LOOK_H_
