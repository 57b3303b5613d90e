// The hand-over to the host's design: its calls in order, and what is left on each way out.
#include <stdexcept>

#include "tests/support/test_host.h"
#include "tests/support/testing.h"

namespace orsa::kesncd {
namespace {

class Handoff : public FreshState {
 protected:
  Handoff() {
    testHost = {};
    analyser.signalFreqs = {{"a", 1.0}, {"b", 2.0}};
    analyser.clockFreqs = {{"b", 20.0}, {"c", 30.0}};
    analyser.extractName = "scope";
    analyser.extractOption = "option";
  }

  /// Calls, result, design name and extractions left of an extraction whose earlier design was
  /// "old".
  std::string Extract(const std::string& source, const std::string& preferences = "") {
    analyser.ncdFile = source;
    analyser.prfFile = preferences;
    analyser.ncdName = "old";
    const std::intptr_t result = analyser.ExtractNCD();
    return testHost.calls + std::to_string(result) + " " + analyser.ncdName + " " +
           std::to_string(testHost.extractions);
  }

  KesNCD analyser;
};

TEST_F(Handoff, CallsTheHostInOrder) {
  const std::string given = " soc scope option a=1 b=2; ";
  const std::string load =
      "; findNcdObject; releaseData; loadData; findData; extractNCD loaded" + given + "-42 soc 0";
  const std::string reload = "setNcdSource '' '.'" + load;
  const std::string asked = "isNcdAvailable; findNcdObject; findData; getIsSourceUpdated 512; ";
  const std::string current =
      asked + "findData; findNcdObject; findNcdPtr; extractNCD current" + given;
  const std::string fromA = "setNcdSource 'a' '.'; findNcdObject; ";
  const std::string cases[][4] = {
      // Source, preferences, what fails. Without a path there is still a source to ask for.
      {"", "", "", current + "-42 soc 0"},
      {"", "", "extractNCD", current + "0 soc 0"},
      {"a", "", "", "setNcdSource 'a' '.'" + load},
      {"", "p", "", "setNcdSource '' 'p'" + load},
      {"a", "", "getGlobalInstance", "0 old 0"},
      {"a", "", "findNcdObject", fromA + "0 old 0"},
      {"a", "", "releaseData", fromA + "releaseData; 0 old 0"},
      {"a", "", "loadData", fromA + "releaseData; loadData; 0 old 0"},
      {"", "", "isNcdAvailable", "isNcdAvailable; " + reload},
      {"", "", "findNcdObject",
       "isNcdAvailable; findNcdObject; setNcdSource '' '.'; findNcdObject; 0 old 0"},
      {"", "", "getIsSourceUpdated", asked + reload}};
  for (const auto& [source, preferences, failing, expected] : cases) {
    testHost = {};
    testHost.failing = failing;
    EXPECT_EQ(Extract(source, preferences), "NCD_EXTRACTION; getGlobalInstance; " + expected);
  }
}

TEST_F(Handoff, ExceptionsPassAndLeaveNothingBehind) {
  const std::string operations =
      " NCD_EXTRACTION/ getGlobalInstance/ isNcdAvailable/ findData/ getIsSourceUpdated/ "
      "findNcdPtr/"
      "a setNcdSource/a findNcdObject/a releaseData/a loadData/a findData";
  for (const std::string& sourceAndOperation : Cut(operations, "/")) {
    testHost = {};
    testHost.throwing = Cut(sourceAndOperation, " ")[1];
    EXPECT_THROW(Extract(Cut(sourceAndOperation, " ")[0]), std::runtime_error) << testHost.throwing;
    EXPECT_EQ(std::to_string(testHost.extractions) + analyser.ncdName, "0old");
  }
}

TEST_F(Handoff, ClocksFillTheGapsWhenTheReportIsOn) {
  analyser.SetTWRFileOn(true);
  testHost.designName = nullptr;
  const std::string calls = Extract("");
  EXPECT_EQ(calls.substr(calls.find("extractNCD")),
            "extractNCD current  scope option a=1 b=2 c=30; -42  0");
  EXPECT_EQ(analyser.signalFreqs.size(), 2U);
  EXPECT_EQ(analyser.isNcdAvailable(CommonData::getGlobalInstance()), &testHost.loaded);
}

}  // namespace
}  // namespace orsa::kesncd
