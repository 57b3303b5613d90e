// Finding the end of a dump's span, and reading again where it was another.
//
// The end is only a guess: of a file's last megabyte, or of a first reading. Whether it was right
// is known after counting, which takes any guess; ReadByWindows then counts once more.
#include "cli/exact_figures/profile_reading.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

/// The last bytes of a file; its last stamp may have many values after it. A file that cannot be
/// read gives no tail: what is wrong with it is said by whoever reads it next.
std::string TailOf(const std::string& path) {
  // In bytes.
  constexpr std::streamoff kTail = 1 << 20;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file.tellg();
  if (!file || size <= 0) return "";
  std::string tail(static_cast<std::size_t>(std::min(size, kTail)), '\0');
  file.seekg(size - static_cast<std::streamoff>(tail.size()));
  file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
  // It may have become shorter since its size was asked for.
  tail.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return tail;
}

}  // namespace

/// Scope, signal and depth are left to the commands, which know what they are asked for.
ProfileOptions CountingOf(const InputOptions& input, const TimeWindow& window,
                          const WindowsAsked& windows) {
  ProfileOptions counting;
  counting.counting.dump = NameOf(input);
  counting.counting.window = window;
  counting.counting.mostBits = MostBitsInMemory();
  counting.parts = windows.PartsOrUsual();
  counting.length = windows.length;
  return counting;
}

// A named pipe or a device is no regular file either.
bool CanReadTwice(const InputOptions& input) {
  std::error_code ignored;
  return input.dump != "-" && std::filesystem::is_regular_file(input.dump, ignored);
}

std::optional<std::uint64_t> ExpectedLast(const InputOptions& input,
                                          const ActivityOptions& options) {
  if (!CanReadTwice(input)) return {};
  const UnpackedSource dump = OpenDump(input);
  // A packed file's last bytes are no text; nor need a plain one have a stamp so near to its end.
  // Both are read as a whole then.
  if (dump.packing.empty()) {
    if (const auto last = LastStampIn(TailOf(input.dump))) return last;
  }
  return LastStampOf(*dump.bytes, options);
}

/// Only for a folded profile, which has one window at least. All but the last are equally long.
std::string FoldedText(const Profile& profile, std::uint64_t parts) {
  return "its span was not known while it was read: there are " +
         std::to_string(profile.windows()) + " windows of " +
         std::to_string(profile.edges[1] - profile.edges[0]) + " ticks in place of " +
         std::to_string(parts) + " equal parts, which a file has";
}

/// On standard error, after the reading, with the dump's name in front.
void SayOfProfile(const ProfileRun<Profile>& run, const ProfileOptions& options) {
  for (const std::string& remark : RemarksOn(run.base)) Remark(options.counting.dump, remark);
  if (run.figures.isFolded) {
    Remark(options.counting.dump, FoldedText(run.figures, options.parts));
  }
}

}  // namespace orsa::kesncd::cli
