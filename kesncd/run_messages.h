// What the runs report. Hosts show these texts as they stand and compare them, so their uneven
// blanks are part of them.
#ifndef KESNCD_RUN_MESSAGES_H_
#define KESNCD_RUN_MESSAGES_H_

#include <string>

namespace orsa::kesncd {

/// A run gives one of these and false.
inline constexpr char kNoDump[] = "ERROR: VCD file is not set.";
inline constexpr char kTopModuleNotMatched[] = "ERROR : Not match top module name.";
/// A range such as [2147483647:0] is a corrupt one.
inline constexpr char kTooManyBits[] = "ERROR: Too many bus bits.";

/// For a dump that broke off on a read error: too few changes would look like a result.
inline std::string CannotRead(const std::string& path) {
  return "ERROR: Cannot read '" + path + "'.";
}

/// No blank before "to": see above.
inline std::string CannotOpen(const std::string& path) {
  return "ERROR: Cannot open '" + path + "'to read.";
}

}  // namespace orsa::kesncd

#endif  // KESNCD_RUN_MESSAGES_H_
