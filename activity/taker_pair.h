// Two takers of one body: a pipe can be read only once, and reading takes longer than counting, so
// figures of several kinds come from one reading.
#ifndef KESNCD_ACTIVITY_TAKER_PAIR_H_
#define KESNCD_ACTIVITY_TAKER_PAIR_H_

#include <cstdint>
#include <string_view>

#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// A taker of ReadBody that passes everything on to two others, the first one first. Neither knows
/// of the other.
template <class First, class Second>
class TakerPair {
 public:
  /// The takers are what `makeFirst()` and `makeSecond()` return: counters cannot be moved.
  template <class MakeFirst, class MakeSecond>
  TakerPair(MakeFirst makeFirst, MakeSecond makeSecond)
      : first_(makeFirst()), second_(makeSecond()) {}

  void Fetch(std::uint32_t codeId) const {
    first_.Fetch(codeId);
    second_.Fetch(codeId);
  }
  void Scalar(std::uint32_t codeId, char value) {
    first_.Scalar(codeId, value);
    second_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    first_.Vector(codeId, value);
    second_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) {
    first_.Real(codeId, value);
    second_.Real(codeId, value);
  }
  void Stamp(std::uint64_t ticks) {
    first_.Stamp(ticks);
    second_.Stamp(ticks);
  }
  void Command(Keyword command) {
    first_.Command(command);
    second_.Command(command);
  }
  void SectionEnd() {
    first_.SectionEnd();
    second_.SectionEnd();
  }
  /// As long as one of them wants more, both get it.
  bool IsDone() const { return first_.IsDone() && second_.IsDone(); }
  /// Whether a stretch that `next` took adds to what this one took: only if it does for both.
  bool Precedes(const TakerPair& next) const {
    return first_.Precedes(next.first_) && second_.Precedes(next.second_);
  }

 protected:
  First& first() { return first_; }
  Second& second() { return second_; }

 private:
  First first_;
  Second second_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_TAKER_PAIR_H_
