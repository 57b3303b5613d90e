// Two takers of a dump's body in one reading (see body_reader.h): a pipe can be read only once.
#ifndef KESNCD_ACTIVITY_TAKER_PAIR_H_
#define KESNCD_ACTIVITY_TAKER_PAIR_H_

#include <cstdint>
#include <string_view>

#include "vcd/dump_keywords.h"

namespace orsa::kesncd {

/// Both have to outlive it.
template <class One, class Other>
class TakerPair {
 public:
  TakerPair(One& one, Other& other) : one_(one), other_(other) {}

  void Scalar(std::uint32_t codeId, char value) {
    one_.Scalar(codeId, value);
    other_.Scalar(codeId, value);
  }
  void Vector(std::uint32_t codeId, std::string_view value) {
    one_.Vector(codeId, value);
    other_.Vector(codeId, value);
  }
  void Real(std::uint32_t codeId, std::string_view value) {
    one_.Real(codeId, value);
    other_.Real(codeId, value);
  }
  void Stamp(std::uint64_t ticks) {
    one_.Stamp(ticks);
    other_.Stamp(ticks);
  }
  void Command(Keyword command) {
    one_.Command(command);
    other_.Command(command);
  }
  void SectionEnd() {
    one_.SectionEnd();
    other_.SectionEnd();
  }
  bool IsDone() const { return one_.IsDone() && other_.IsDone(); }

 private:
  One& one_;
  Other& other_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_TAKER_PAIR_H_
