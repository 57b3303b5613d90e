// Looking for cuts, and reading up to them.
#include "free_format/body_stretch.h"

#include <algorithm>
#include <string_view>

namespace orsa::kesncd {

namespace {

// A stamp line is nearly always found within one reading.
constexpr std::size_t kSearched = std::size_t{1} << 16;  // bytes that are read at a time
// "#" and the digits of a number that surely fits 64 bits, then the end of the line.
constexpr std::size_t kStampDigits = 19;
constexpr std::size_t kLongestStampLine = 1 + kStampDigits + 2;

/// Whether a line that is a stamp and nothing else begins the text. A stamp with a fraction is no
/// cut, nor is one with another word on its line.
bool BeginsWithStampLine(std::string_view text) {
  if (!text.starts_with('#')) return false;
  const std::size_t end = text.find_first_not_of("0123456789", 1);
  // At most as many digits as never overflow.
  if (end == std::string_view::npos || end == 1 || end > 1 + kStampDigits) return false;
  text.remove_prefix(end);
  return text.starts_with('\n') || text.starts_with("\r\n");
}

/// The first stamp line that begins at an offset from `from` on and before `to`; `to` for none.
/// There is a byte before `from`. It may be the newline that ends the line before.
std::uint64_t FindStampLine(ByteFile& file, std::uint64_t from, std::uint64_t to) {
  std::vector<char> block(kSearched);
  std::uint64_t before = from - 1;  // of what the block begins with
  while (before + 1 < to) {
    std::size_t held = 0;
    // A read may give fewer bytes than asked for before the end of the file.
    while (held < block.size()) {
      const std::size_t got = file.ReadAt(before + held, block.data() + held, block.size() - held);
      if (got == 0) break;
      held += got;
    }
    const std::string_view text(block.data(), held);
    const bool isLast = held < block.size();
    // What stands too near to the end of the block is looked at with the next one.
    const std::size_t sure = isLast ? held : held - kLongestStampLine;
    for (std::size_t at = text.find("\n#"); at < sure; at = text.find("\n#", at + 1)) {
      const std::uint64_t line = before + at + 1;
      if (line >= to) return to;
      if (BeginsWithStampLine(text.substr(at + 1))) return line;
    }
    if (isLast) return to;
    // The bytes that were not sure are read again at the start of the next block.
    before += sure;
  }
  return to;
}

}  // namespace

std::size_t StretchSource::Read(char* to, std::size_t most) {
  // Relaxed: a stretch that reads one block more does no harm.
  if (isUnwanted_ != nullptr && isUnwanted_->load(std::memory_order_relaxed)) throw Unwanted();
  // The offset may be the end, or lie after it.
  most = static_cast<std::size_t>(std::min<std::uint64_t>(most, end() - std::min(end(), at_)));
  if (most == 0) return 0;
  const std::size_t got = file_.ReadAt(at_, to, most);
  at_ += got;
  // The file's end counts also before the stretch's: it may have become shorter.
  isAtFileEnd_ = got == 0;
  return got;
}

void StretchSource::GoTo(std::uint64_t offset, std::vector<std::uint64_t> ends) {
  at_ = offset;
  ends_ = std::move(ends);
  end_ = 0;
  isAtFileEnd_ = false;
}

bool StretchSource::Pass() {
  if (isAtFileEnd_ || end_ + 1 == ends_.size()) return false;
  ++end_;
  return true;
}

BodyCuts::BodyCuts(ByteFile& file, std::uint64_t bodyBegin, std::uint32_t parts)
    : file_(file), bodyBegin_(bodyBegin), parts_(parts) {}

/// Where a part would begin if a body could be cut anywhere. Counted so that it neither overflows
/// nor drifts: the remainder is spread over the parts.
std::uint64_t BodyCuts::Target(std::uint32_t part) const {
  const std::uint64_t bytes = std::max(file_.size(), bodyBegin_) - bodyBegin_;
  return bodyBegin_ + bytes / parts_ * part + bytes % parts_ * part / parts_;
}

/// The cut before a part; the part's end where it has none.
std::uint64_t BodyCuts::Find(std::uint32_t part) const {
  if (part == 0) return bodyBegin_;
  // There must be a byte before the place where the search begins.
  return FindStampLine(file_, std::max(Target(part), bodyBegin_ + 1), Target(part + 1));
}

StretchRange BodyCuts::Stretch(std::uint32_t part) const {
  const std::uint64_t begin = Find(part);
  // Where no stamp line begins in it, the part belongs to the one before.
  if (part > 0 && begin == Target(part + 1)) return {};
  // The stretch goes on over all parts that have no cut.
  for (std::uint32_t next = part + 1; next < parts_; ++next) {
    const std::uint64_t end = Find(next);
    if (end != Target(next + 1)) return {begin, end};
  }
  return {begin, StretchSource::kFileEnd};
}

std::vector<StretchRange> BodyCuts::Stretches() const {
  // One stretch for the whole, split at each cut.
  std::vector<StretchRange> stretches{{bodyBegin_, StretchSource::kFileEnd}};
  for (std::uint32_t part = 1; part < parts_; ++part) {
    const std::uint64_t cut = Find(part);
    if (cut == Target(part + 1)) continue;
    stretches.back().end = cut;
    stretches.push_back({cut, StretchSource::kFileEnd});
  }
  return stretches;
}

}  // namespace orsa::kesncd
