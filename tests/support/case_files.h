// Pages of cases: dumps in full, named for what they show, each with what is made of it.
//
//   === stamp that goes back
//   # Why the case is there, where its name does not say it all.
//   $timescale 1 ns $end
//   (the dump, or another text that is read)
//   --- found
//   (what the test makes of it)
//
// A case may have several results, or none; what their titles mean is up to the test. What stands
// before the first case is about the page.
//
// In texts "<0D>" is the byte of that number, "<1000*ab>" a thousand times "ab", and "<>" at the
// end of a line says that none ends there.
//
// KESNCD_UPDATE_CASES=1 in the environment writes the results instead of comparing them; the
// difference is then to be read in the version control.
#ifndef KESNCD_TESTS_SUPPORT_CASE_FILES_H_
#define KESNCD_TESTS_SUPPORT_CASE_FILES_H_

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orsa::kesncd {

struct Case {
  struct Result {
    std::string title;
    std::string text;
  };
  /// The text of a result; nothing where there is none.
  std::string TextOf(const std::string& title) const;
  bool Has(const std::string& title) const;

  std::string name;
  std::string dump;
  std::vector<Result> results;
  std::string head;  // its lines in the page, the dump with them
};

/// The cases of a page, or of all pages in a folder: its path in the project.
std::vector<Case> CasesIn(const std::string& path);
/// The case of a page that has the name.
Case CaseIn(const std::string& path, const std::string& name);

/// What is made of a case under a title; nothing where the title is of something that is read.
using MadeOf = std::function<std::optional<std::string>(const Case& of, const std::string& title)>;

/// Compares all results in a page, or the pages of a folder, with what is made of the cases.
void ExpectCases(const std::string& path, const MadeOf& made);

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_CASE_FILES_H_
