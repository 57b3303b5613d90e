// The words of a SAIF file: which names its readers take, in which unit its times are, and the nesting of its
// brackets. What a power estimator reads of a dump arrives there through these.
#ifndef KESNCD_EXPORT_SAIF_TEXT_H_
#define KESNCD_EXPORT_SAIF_TEXT_H_

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace orsa::kesncd {

/// The unit of a file's times: `count` (1, 10 or 100) of `unit`; a tick is `factor` of them.
struct SaifTimescale {
  unsigned count = 1;
  std::string_view unit;
  std::uint64_t factor = 1;
};

/// The largest unit that a SAIF file can name and that a tick is a whole multiple of. Nothing for a
/// tick of 0.
std::optional<SaifTimescale> SaifTimescaleOf(std::uint64_t tickFemtoseconds);

/// The name without the backslash that says in a dump that it is an escaped one.
std::string_view SaifBareName(std::string_view name);

/// Whether readers take a bare name. They stop at the first one that they do not, and read nothing
/// of what follows it.
bool IsSaifName(std::string_view bareName);

/// A net's name with a backslash before each bracket, as readers expect it: "q\[3\]".
std::string SaifNetName(std::string_view bareName);

/// What the head of a file says. Quotes and control characters of the texts are left out.
struct SaifHead {
  std::string design;
  std::string date;     // the dump's own
  std::string version;  // of the program
  SaifTimescale timescale;
  std::uint64_t observed = 0;  // ticks
};

/// One net's figures, times in ticks.
struct SaifFigures {
  std::uint64_t t0 = 0;
  std::uint64_t t1 = 0;
  std::uint64_t tx = 0;
  std::uint64_t tz = 0;
  std::uint64_t toggles = 0;
  std::uint64_t glitches = 0;
};

/// Writes a file as its parts come. Calling order: construct, then for each instance Open, its Nets,
/// its inner instances, Close; then Finish. Exactly one instance is outermost. Names were checked
/// with IsSaifName before.
class SaifStream {
 public:
  SaifStream(std::ostream& out, const SaifHead& head);

  void Open(std::string_view bareName);
  /// Times that are missing to the observed time count as x: there nothing is known of the net.
  void Net(std::string_view bareName, const SaifFigures& figures);
  void Close();
  void Finish();

 private:
  void CloseNets();
  void Indent();
  void Time(std::string_view key, std::uint64_t ticks);

  std::ostream& out_;
  const std::uint64_t observed_;
  const std::uint64_t factor_;
  std::size_t depth_ = 1;  // open brackets
  bool inNets_ = false;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_SAIF_TEXT_H_
