// The activity file of a flat run, which hosts read: the library leaves it beside each dump that it
// opens by name, the program only where a user asks for it.
//
// Its text, one line a signal in declaration order, frequencies in MHz with six decimals:
//
//   module | soc
//   signal | clk | 100.000000
//   signal | data[7:0] | 12.500000
//
// The program writes it whole or leaves what was there as it was.
#ifndef KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_
#define KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_

#include <string>

namespace orsa::kesncd::cli {

/// Where the activity goes that was asked for, an empty text meaning beside the dump. Throws
/// Failure with Unusable where there is no such place: a pipe has none. `asked` is what the user
/// gave with --activity, `dump` the path of the dump: "x.vcd" has its file at "x.vcd.txt", as with
/// the library.
std::string ActivityPath(const std::string& asked, const std::string& dump);

/// Throws Failure with Unusable for a regular file that is no activity file: it must not be written
/// over. Beside a dump may stand a file of the user's that only happens to be called DUMP.txt. A
/// file that is not there yet, a pipe or a device passes. Called before the reading, which may take
/// long.
void RequireActivityFile(const std::string& path);

/// The text of an activity file, line by line. Calling order: construct, Add for each signal, Save
/// once.
class ActivityText {
 public:
  /// Starts with the line of the module.
  explicit ActivityText(const std::string& module);
  /// Appends a line. `frequency` is in MHz; callers give 0 for what is not known.
  void Add(const std::string& signal, double frequency);
  /// Writes the file, whole or not at all (see WholeFile). Throws Failure with OutputFailed.
  void Save(const std::string& path) const;

 private:
  std::string text_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_
