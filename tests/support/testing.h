// What the tests share: a process state as at load, files that remove themselves, and rows whose
// failures say which row it was.
#ifndef KESNCD_TESTS_SUPPORT_TESTING_H_
#define KESNCD_TESTS_SUPPORT_TESTING_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "kesncd/kesncd.h"
#include "tests/support/reader_state.h"

namespace orsa::kesncd {

/// Each test starts from the reader state that loading the library gives.
class FreshState : public ::testing::Test {
 protected:
  FreshState() { ResetReaderState(); }
  ~FreshState() override { ResetReaderState(); }
};

/// A folder for the test's files, removed with it.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  /// Path of `name` in the folder.
  std::string Path(const std::string& name) const { return (path_ / name).string(); }
  /// Writes a file and returns its path.
  std::string Write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path path_;
};

std::string ReadAll(const std::string& path);

/// The paths of the dumps in a folder, one at least.
std::vector<std::string> DumpsIn(const std::string& folder);

/// What an action writes to standard output.
template <class Action>
std::string Printed(Action action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

/// A text that many times.
std::string Times(int count, const std::string& text);

/// " name=MHz name=MHz ..."
std::string TextOf(const std::map<std::string, double>& frequencies);

/// The parts of a text between separators.
std::vector<std::string> Cut(const std::string& text, const std::string& separator);

/// A dump from its lines, which are parted by "~". Words in capitals stand for lines that many
/// dumps have: SCALE, TOP, U, CLK, QU, BUS, UP, END, and HEAD for all of a header.
std::string Dump(const std::string& lines);

/// The rows of a table and their columns, which " => " parts. A line that begins with four blanks
/// continues the row above.
std::vector<std::vector<std::string>> Rows(const std::string& table,
                                           const std::string& separator = "\n");

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_TESTING_H_
