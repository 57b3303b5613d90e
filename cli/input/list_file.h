// Lists and reports that commands read besides a dump: names to find, nets, tables, timing reports.
// They are taken as dumps are: as files, packed, from pipes or from standard input ("-").
#ifndef KESNCD_CLI_INPUT_LIST_FILE_H_
#define KESNCD_CLI_INPUT_LIST_FILE_H_

#include <string>
#include <vector>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// The text of a file, unpacked, without a byte order mark. Throws Failure with Unusable, also for
/// one that has no end.
std::string ReadText(const std::string& path);
/// The same of what is open already and unpacked; messages call it `name`.
std::string ReadText(ByteSource& source, const std::string& name);

/// The names in a list: one a line, without blanks around them; blank lines and those that start
/// with "#" are left out.
std::vector<std::string> ReadNames(const std::string& path);

/// A text that the library can open by a path: what it reads is not where the user's file is.
class TextByPath {
 public:
  /// Throws Failure with Unusable where there is no memory for it.
  explicit TextByPath(const std::string& text);
  ~TextByPath();
  TextByPath(const TextByPath&) = delete;
  TextByPath& operator=(const TextByPath&) = delete;

  std::string path() const;
  /// The same for another process, as long as this object is there.
  std::string PathForOthers() const;

 private:
  int file_;
};

/// A table's text with the lines that start with "#" left blank, so that lines keep their numbers.
std::string WithoutComments(const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_LIST_FILE_H_
