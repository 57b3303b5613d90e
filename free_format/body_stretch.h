// Stretches of a dump's body that are read apart from one another: where a body may be cut, and the
// bytes of a stretch. A cut stands before a time stamp that has a line of its own. It can still be
// wrong (inside a comment, say), so whoever adds stretches up has to look at how each one ended.
#ifndef KESNCD_FREE_FORMAT_BODY_STRETCH_H_
#define KESNCD_FREE_FORMAT_BODY_STRETCH_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "text/byte_stream.h"

namespace orsa::kesncd {

/// The bytes of a file up to one of several ends, which can be passed one after the other. A
/// reader's words end there as at the end of a file, until Pass lets them go on.
class StretchSource : public ByteSource {
 public:
  // No file is that large.
  static constexpr std::uint64_t kFileEnd = UINT64_MAX;
  /// Thrown by Read when others have failed, so that nobody wants the bytes any more.
  struct Unwanted {};

  /// The file from its beginning.
  explicit StretchSource(ByteFile& file) : StretchSource(file, 0, {kFileEnd}) {}
  /// From an offset to the first of `ends`, which grow.
  StretchSource(ByteFile& file, std::uint64_t begin, std::vector<std::uint64_t> ends)
      : file_(file), at_(begin), ends_(std::move(ends)) {}

  // Returns 0 also at the end of the stretch, until Pass.
  std::size_t Read(char* to, std::size_t most) override;
  /// Goes on at an offset, up to other ends. The bytes that come next are those; what was met is
  /// forgotten.
  void GoTo(std::uint64_t offset, std::vector<std::uint64_t> ends);
  /// Passes the end that was met; false where the file ended, or there is no other end.
  bool Pass();
  /// Looks at `isUnwanted` before every reading.
  void StopFor(const std::atomic<bool>& isUnwanted) { isUnwanted_ = &isUnwanted; }

  ByteFile& file() const { return file_; }
  /// The end to which it reads.
  std::uint64_t end() const { return ends_[end_]; }
  /// Whether the file ended before that.
  bool IsAtFileEnd() const { return isAtFileEnd_; }

 private:
  // Shared by all stretches, each of which reads it at offsets of its own.
  ByteFile& file_;
  // The offset of the byte that comes next.
  std::uint64_t at_;
  std::vector<std::uint64_t> ends_;
  // The index of the end that is met next.
  std::size_t end_ = 0;
  bool isAtFileEnd_ = false;
  // Null where nobody may stop the reading.
  const std::atomic<bool>* isUnwanted_ = nullptr;
};

/// The bytes from `begin` up to `end`, which is kFileEnd for the file's last stretch.
struct StretchRange {
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  bool IsEmpty() const { return begin == end; }
};

/// Cuts the body of a dump, which begins at an offset, into parts of about the same size. The cuts
/// depend on nothing but the file's bytes, so everyone who reads it finds the same.
class BodyCuts {
 public:
  /// `parts` is at least 1.
  BodyCuts(ByteFile& file, std::uint64_t bodyBegin, std::uint32_t parts);

  /// A part's stretch, empty where no stamp begins in the part. Stretches that are not empty follow
  /// one another without a gap. Reads the file around the part's ends. Parts count from 0.
  StretchRange Stretch(std::uint32_t part) const;
  /// All stretches that are not empty. Their number may be smaller than that of the parts.
  std::vector<StretchRange> Stretches() const;

 private:
  std::uint64_t Target(std::uint32_t part) const;
  std::uint64_t Find(std::uint32_t part) const;

  ByteFile& file_;
  const std::uint64_t bodyBegin_;
  const std::uint32_t parts_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_BODY_STRETCH_H_
