// Formats by the ends of file names.
#include "cli/output/path_ending.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

#include "cli/options/option_list.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

/// The last ending of a path, in small letters; takes it off the path. "a/b.csv" becomes "a/b" and
/// gives "csv".
std::string TakeEnding(std::filesystem::path& path) {
  std::string ending = path.extension().string();
  path.replace_extension();
  // ASCII, whatever the locale.
  for (char& c : ending) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  // Without its dot.
  return ending.empty() ? ending : ending.substr(1);
}

}  // namespace

PathEnding EndingOf(const std::string& path) {
  std::filesystem::path left = path;
  PathEnding ending;
  ending.format = TakeEnding(left);
  ending.isPacked = ending.format == "gz";
  // "x.gz" alone says only that it is packed.
  if (ending.isPacked) ending.format = TakeEnding(left);
  return ending;
}

void RefuseOtherEnding(const std::string& path, const std::vector<std::string>& words) {
  // "vcd" is what prepare writes, "html" what report does, "kact" is a database.
  constexpr std::array<std::string_view, 7> kFormats{"csv",  "json", "saif", "tcl",
                                                     "html", "vcd",  "kact"};
  const std::string ending = EndingOf(path).format;
  if (std::find(kFormats.begin(), kFormats.end(), ending) == kFormats.end() ||
      std::find(words.begin(), words.end(), ending) != words.end()) {
    return;
  }
  throw Failure(FailureKind::Unusable, path + ": ends in ." + ending +
                                           ", but this command writes " + Join(words, ", ") +
                                           (words.size() > 1 ? "; --format says which" : ""));
}

}  // namespace orsa::kesncd::cli
