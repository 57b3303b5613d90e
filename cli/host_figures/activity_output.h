// The activity file of a flat run, which hosts read: the library leaves it beside each dump that it
// opens by name, the program only where a user asks for it.
#ifndef KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_
#define KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_

#include <optional>
#include <string>

namespace orsa::kesncd::cli {

/// Where the activity goes that was asked for, an empty text meaning beside the dump. Throws
/// Failure with Unusable where there is no such place: a pipe has none.
std::string ActivityPath(const std::string& asked, const std::string& dump);

/// Throws Failure with Unusable for a regular file that is no activity file: it must not be written
/// over.
void RequireActivityFile(const std::string& path);

/// The text of an activity file, line by line.
class ActivityText {
 public:
  explicit ActivityText(const std::string& module);
  /// `frequency` in MHz.
  void Add(const std::string& signal, double frequency);
  /// Writes the file. Throws Failure with OutputFailed.
  void Save(const std::string& path) const;

 private:
  std::string text_;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_ACTIVITY_OUTPUT_H_
