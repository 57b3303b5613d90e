// Lists and reports that commands read besides a dump: names to find, nets, tables, timing reports.
// They are taken as dumps are: as files, packed, from pipes or from standard input ("-").
//
// A list of names, as `find --names-from` or `extract --nets` takes it:
//
//   # clocks
//   clk
//   data_0
#ifndef KESNCD_CLI_INPUT_LIST_FILE_H_
#define KESNCD_CLI_INPUT_LIST_FILE_H_

#include <string>
#include <vector>

#include "text/byte_stream.h"

namespace orsa::kesncd::cli {

/// The text of a file, unpacked, without a byte order mark. Throws Failure with Unusable, also for
/// one that has no end. Of at most 1 GiB: lists are kept in memory.
std::string ReadText(const std::string& path);
/// The same of what is open already and unpacked; messages call it `name`. `source` is read to its
/// end.
std::string ReadText(ByteSource& source, const std::string& name);

/// The names in a list: one a line, without blanks around them; blank lines and those that start
/// with "#" are left out. In the file's order, duplicates and all. "#" is no comment after a name,
/// where it may be part of one.
std::vector<std::string> ReadNames(const std::string& path);

/// A text that the library can open by a path: what it reads is not where the user's file is, and
/// of a report that cannot be read to its end it would take what it got for all of it. The
/// path is good as long as the object lives, and only while this process does. The text is in
/// memory, not on a disk.
class TextByPath {
 public:
  /// Throws Failure with Unusable where there is no memory for it. The text is copied; the caller
  /// may let go of it.
  explicit TextByPath(const std::string& text);
  ~TextByPath();
  TextByPath(const TextByPath&) = delete;
  TextByPath& operator=(const TextByPath&) = delete;

  /// Of this process's own descriptor.
  std::string path() const;
  /// The same for another process, as long as this object is there. For a child that is started
  /// after this, such as yosys.
  std::string PathForOthers() const;

 private:
  int file_;
};

/// A table's text with the lines that start with "#" left blank, so that lines keep the numbers
/// that messages of the library's CSV reader name.
std::string WithoutComments(const std::string& text);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_LIST_FILE_H_
