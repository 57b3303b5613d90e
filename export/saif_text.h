// The words of a SAIF file: which names its readers take, in which unit its times are, and the
// nesting of its brackets. What a power estimator reads of a dump arrives there through these.
#ifndef KESNCD_EXPORT_SAIF_TEXT_H_
#define KESNCD_EXPORT_SAIF_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "activity/activity_result.h"

namespace orsa::kesncd {

/// A file's times: ticks of a dump in a unit that SAIF has a name for, stretched where the design's
/// clock runs at another period than the dump's.
class SaifTimes {
 public:
  __extension__ using Wide = unsigned __int128;

  /// Times become `numerator` / `denominator` of what the dump says, none of the three is 0. The
  /// unit is the largest that every tick is a whole multiple of; where a stretched tick is none of
  /// any, times are rounded to femtoseconds.
  SaifTimes(std::uint64_t tickFemtoseconds, std::uint64_t numerator, std::uint64_t denominator);

  /// "10 ps"
  const std::string& unit() const { return unit_; }
  /// The first `ticks` of the observed time in the file's unit. A part of that time is written as
  /// the difference between its end and its begin, so that parts add up whatever the rounding.
  Wide Until(std::uint64_t ticks) const {
    return rounded_ ? (ticks * factor_ + denominator_ / 2) / denominator_ : ticks * factor_;
  }

 private:
  std::string unit_;
  Wide factor_ = 1;
  Wide denominator_ = 1;
  bool rounded_ = false;
};

/// The name without the backslash that says in a dump that it is an escaped one.
std::string_view SaifBareName(std::string_view name);

/// Whether readers take a bare name. They stop at the first one that they do not, and read nothing
/// of what follows it.
bool IsSaifName(std::string_view bareName);

/// Throws Failure with Unusable where the outermost instance cannot be called that.
void CheckSaifRoot(std::string_view bareName);

/// A net's name with a backslash before each bracket, as readers expect it: "q\[3\]".
std::string SaifNetName(std::string_view bareName);

/// What the head of a file says. Quotes and control characters of the texts are left out.
struct SaifHead {
  std::string design;
  std::string date;            // the dump's own
  std::string version;         // of the program
  std::uint64_t observed = 0;  // ticks
};

/// Writes a file as its parts come. Calling order: construct, then for each instance Open, its
/// Nets, its inner instances, Close; then Finish. Exactly one instance is outermost. Names were
/// checked with IsSaifName before, and those of nets went through SaifNetName.
class SaifStream {
 public:
  SaifStream(std::ostream& out, const SaifHead& head, const SaifTimes& times);

  void Open(std::string_view bareName);
  /// Times that are missing to the observed time count as x: there nothing is known of the net.
  void Net(std::string_view netName, const BitFigures& figures);
  void Close();
  /// What was written before may reach the stream only now.
  void Finish();

 private:
  void Indent();
  void CloseNets();
  void Line(std::string_view text);
  void Time(std::string_view key, std::uint64_t begin, std::uint64_t end);
  void Flush();

  std::ostream& out_;
  const SaifTimes times_;
  const std::uint64_t observed_;
  std::string text_;       // not written yet
  std::size_t depth_ = 1;  // open brackets
  bool inNets_ = false;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_SAIF_TEXT_H_
