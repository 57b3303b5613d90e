// Exact activity as a SAIF file, the form in which power estimators read what a simulation did.
//
// The form is explained in saif_text.h. A scope is an instance, a bit is a net, an alias of a code
// is one more net with the same figures. What is chosen: the scope, the variables in it, the name
// of the outermost instance, and by how much times are stretched.
#ifndef KESNCD_EXPORT_SAIF_WRITER_H_
#define KESNCD_EXPORT_SAIF_WRITER_H_

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "activity/activity_result.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// Defaults write all of a dump as it is.
struct SaifOptions {
  std::string version;                        // of the program, for VERSION in the head
  std::uint32_t scope = Declarations::kDump;  // only what is in it and below; kDump for all
  /// The outermost instance is the scope itself, not the top-level scope with the way to it. What
  /// is outside of it is not written. From tb/soc: (INSTANCE soc ...) with it, (INSTANCE tb
  /// (INSTANCE soc ...)) without.
  bool stripsWay = false;
  std::string root;  // the outermost instance's name; empty for the scope's own
  /// By variableId, whether it is written at all; empty for every one.
  std::vector<bool> kept;
  // Times are multiplied by the quotient of these: by how much the design's clock is slower.
  std::uint64_t scaleNumerator = 1;
  std::uint64_t scaleDenominator = 1;
};

/// What a user must be told of the file.
struct SaifReport {
  std::uint64_t nets = 0;       // written ones: bits
  std::uint64_t unwritten = 0;  // bits whose names no reader takes, or would take for another's
  std::string root;             // the outermost instance's name
  /// Top-level scopes that were put into one instance made for them; empty where there is only one.
  /// The paths are one deeper then, which an estimator must know.
  std::vector<std::string> joined;
};

/// Writes nets as they come, in memory that is small beside the result. `unwritten`, if not null,
/// takes the path of each bit that is left out on a line of its own.
///
/// Throws Failure with Unusable, before anything is written, where the dump does not say how long a
/// tick is or nothing was observed, or where the root cannot have its name; with NothingMatched
/// where there is no bit to write. `result` and `options` are read only. What the streams throw
/// passes through; the file is then incomplete.
SaifReport WriteSaif(const ActivityResult& result, const SaifOptions& options, std::ostream& out,
                     std::ostream* unwritten);

struct SaifHead;
class SaifTimes;

/// The head and the times of a file, also of one whose nets are of another kind, such as pins (see
/// pin_writers.cc). SaifTimesOf throws as WriteSaif does where there can be no file.
SaifHead SaifHeadOf(const ActivityResult& result, const SaifOptions& options,
                    const std::string& root);
SaifTimes SaifTimesOf(const ActivityResult& result, const SaifOptions& options);

}  // namespace orsa::kesncd

#endif  // KESNCD_EXPORT_SAIF_WRITER_H_
