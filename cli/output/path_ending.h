// What the name of an output file says of its content: "-o activity.saif" needs no --format.
#ifndef KESNCD_CLI_OUTPUT_PATH_ENDING_H_
#define KESNCD_CLI_OUTPUT_PATH_ENDING_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orsa::kesncd::cli {

/// The end of "x.CSV.gz" is "csv", packed: endings are in small letters. Of a path without one, as
/// "-" is, it is empty.
struct PathEnding {
  std::string format;
  bool isPacked = false;
};
PathEnding EndingOf(const std::string& path);

/// Throws Failure with Unusable where a path has the ending of a format of this program's that is
/// none of `words`, which the command writes: nobody wants a table in "x.saif". Only the program's
/// own formats are refused: "x.txt" and "x.out" may hold anything.
void RefuseOtherEnding(const std::string& path, const std::vector<std::string>& words);

/// The format of an output: what was asked for, else what the path ends in, else `otherwise`. Other
/// endings, such as ".txt", say nothing. `formats` are the command's own words with their formats;
/// `otherwise` is what a path that says nothing means, as "-" and an empty one do.
template <class Format>
Format ChosenFormat(const std::optional<Format>& asked, const std::string& path,
                    const std::vector<std::pair<std::string, Format>>& formats, Format otherwise) {
  // What a user says goes before what a name looks like: "--format json -o x.csv" writes JSON.
  if (asked) return *asked;
  const std::string ending = EndingOf(path).format;
  std::vector<std::string> words;
  for (const auto& [word, format] : formats) {
    if (word == ending) return format;
    words.push_back(word);
  }
  // No such format here; perhaps it is one of another command's.
  RefuseOtherEnding(path, words);
  return otherwise;
}

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_OUTPUT_PATH_ENDING_H_
