// The words of a SAIF file: which names its readers take, in which unit its times are, and the
// nesting of its brackets. What a power estimator reads of a dump arrives there through these.
//
// A file in full, as SaifStream writes it (lines of nets are longer in truth):
//
//   (SAIFILE
//     (SAIFVERSION "2.0")
//     (DIRECTION "backward")
//     (DESIGN "tb")
//     (DATE "Mon Jan  5 10:00:00 2026")
//     (VENDOR "libkesncd")
//     (PROGRAM_NAME "kesncd")
//     (VERSION "1.0")
//     (DIVIDER / )
//     (TIMESCALE 1 ns)
//     (DURATION 40)
//     (INSTANCE tb
//       (NET
//         (count\[0\] (T0 20) (T1 20) (TX 0) (TZ 0) (TB 0) (TC 4) (IG 0))
//       )
//     )
//   )
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
/// clock runs at another period than the dump's. Constructed once for a file, then asked for each
/// time in it.
class SaifTimes {
 public:
  // Products of a tick count and a factor need more than 64 bits.
  __extension__ using Wide = unsigned __int128;

  /// Times become `numerator` / `denominator` of what the dump says, none of the three is 0. The
  /// unit is the largest that every tick is a whole multiple of; where a stretched tick is none of
  /// any, times are rounded to femtoseconds. Throws Failure with Unusable where a factor is so
  /// large that products would not fit.
  SaifTimes(std::uint64_t tickFemtoseconds, std::uint64_t numerator, std::uint64_t denominator);

  /// As TIMESCALE takes it, such as "10 ps": 1, 10 or 100 of fs, ps, ns or us.
  const std::string& unit() const { return unit_; }
  /// The first `ticks` of the observed time in the file's unit. A part of that time is written as
  /// the difference between its end and its begin, so that parts add up whatever the rounding.
  /// Rounded only where the unit is not fine enough for every tick; then to the nearest.
  Wide Until(std::uint64_t ticks) const {
    return rounded_ ? (ticks * factor_ + denominator_ / 2) / denominator_ : ticks * factor_;
  }

 private:
  std::string unit_;
  // Time in the unit is ticks * factor_ / denominator_; without rounding the denominator is not
  // looked at.
  Wide factor_ = 1;
  Wide denominator_ = 1;
  bool rounded_ = false;
};

/// The name without the backslash that says in a dump that it is an escaped one. A view into the
/// name. SAIF has no backslash of that kind: it escapes brackets only.
std::string_view SaifBareName(std::string_view name);

/// Whether readers take a bare name: a letter or "_", then letters, digits, "_", "$", brackets, "."
/// and "\", and none of SAIF's own words. They stop at the first name that they do not take, and
/// read nothing of what follows it.
bool IsSaifName(std::string_view bareName);

/// Throws Failure with Unusable where the outermost instance cannot be called that. The message
/// names --strip and --root, by which a user changes it.
void CheckSaifRoot(std::string_view bareName);

/// A net's name with a backslash before each bracket, as readers expect it: "q\[3\]". Names of
/// instances are not escaped: readers expect brackets there as they are.
std::string SaifNetName(std::string_view bareName);

/// What the head of a file says, without quotes and control characters. An estimator shows it; none
/// of it but DURATION matters to figures.
struct SaifHead {
  std::string design;
  std::string date;            // of the dump, so that the same dump always gives the same file
  std::string version;         // of the program
  std::uint64_t observed = 0;  // ticks
};

/// Writes a file as its parts come. Calling order: construct, then for each instance Open, its
/// Nets, its inner instances, Close; then Finish. Exactly one instance is outermost. Names were
/// checked with IsSaifName before, and those of nets went through SaifNetName. The stream is the
/// caller's and gets blocks of 64 KiB. Nothing is checked here: a name that is not allowed makes a
/// file that nobody reads on from there.
class SaifStream {
 public:
  /// Writes the head. `head.observed` is DURATION, before it is scaled.
  SaifStream(std::ostream& out, const SaifHead& head, const SaifTimes& times);

  /// Nets of an instance come before its inner instances: an Open ends the list of nets.
  void Open(std::string_view bareName);
  /// Times that are missing to the observed time count as x: there nothing is known of the net.
  void Net(std::string_view netName, const BitFigures& figures);
  /// Closes the instance that was opened last.
  void Close();
  /// What was written before may reach the stream only now.
  void Finish();

 private:
  /// Blanks for the depth that is open.
  void Indent();
  /// Ends "(NET" of the open instance, if it has one.
  void CloseNets();
  /// One line of its own, indented.
  void Line(std::string_view text);
  /// " (T0 20)", the time between two points of the observed time.
  void Time(std::string_view key, std::uint64_t begin, std::uint64_t end);
  void Flush();

  std::ostream& out_;
  const SaifTimes times_;
  const std::uint64_t observed_;
  std::string text_;       // not written yet
  std::size_t depth_ = 1;  // open brackets, of which the outermost is open until Finish
  bool inNets_ = false;    // between "(NET" and its bracket
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_SAIF_TEXT_H_
