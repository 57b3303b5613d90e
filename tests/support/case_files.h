// Cases that are files: a dump NAME.vcd, named for what it shows, and beside it in expected.txt,
// after a line "== NAME", what is made of it. Lines in front of that which begin with "# " say why
// the case is there.
//
// KESNCD_UPDATE_CASES=1 in the environment writes expected.txt instead of comparing; the difference
// is then to be read in the version control.
#ifndef KESNCD_TESTS_SUPPORT_CASE_FILES_H_
#define KESNCD_TESTS_SUPPORT_CASE_FILES_H_

#include <functional>
#include <string>

namespace orsa::kesncd {

/// A folder of cases of the project.
std::string CasesOf(const std::string& room);

/// Compares what `made` makes of every dump in a folder with what the room's cases expect.
void ExpectCases(const std::string& dumps, const std::string& room,
                 const std::function<std::string(const std::string& dump)>& made);

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_CASE_FILES_H_
