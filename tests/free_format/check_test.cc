// What `kesncd check` finds in dumps, and what is made of them once they are prepared.
#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "free_format/findings/dump_findings.h"
#include "free_format/prepare/prepare.h"
#include "tests/support/case_files.h"
#include "tests/support/dump_figures.h"
#include "tests/support/reading_rules.h"
#include "tests/support/testing.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"

namespace orsa::kesncd {
namespace {

/// What stands before a finding in the lists below: nothing before a fault.
std::string ListOf(FindingKind kind) {
  const FindingText& text = TextOf(kind);
  if (text.concerns == Concerns::GrammarReader) return "grammar: ";
  return text.severity == Severity::WorthKnowing ? "note: " : "";
}

/// The findings, a line each: how many, the line of the first, the text, and for how long dumping
/// was off.
std::string FindingsOf(const std::string& dump) {
  TextSource source(dump, std::string::npos);
  std::ostringstream text;
  for (const auto& [kind, tally] : CheckDump(source, "").findings) {
    text << ListOf(kind) << "found " << tally.count;
    if (tally.line > 0) text << " from line " << tally.line;
    text << ": " << TextOf(kind).finding;
    if (kind == FindingKind::DumpingOff) text << ": " << tally.example;
    text << "\n";
  }
  return text.str();
}

/// What is said while a dump is prepared, and what the hierarchical reader makes of the outcome.
std::string PreparedText(const std::string& dump) {
  TextSource source(dump, std::string::npos);
  TextSink sink;
  std::ostringstream text;
  text.precision(12);
  for (const std::string& remark : PrepareDump(source, sink, {}).Remarks()) {
    text << "remark: " << remark << "\n";
  }
  const support::Figures figures = support::TreeFigures(sink.text);
  text << "prepared: " << startCycle << " to " << endCycle << ", a tick of " << timeScale
       << " ns\n";
  for (const auto& [signal, changes] : figures) {
    text << "  " << signal.first << " " << signal.second << " " << changes << "\n";
  }
  return text.str();
}

/// Both, of a dump that keeps the rules of preparing.
std::string AllOf(const std::string& dump) {
  try {
    support::CheckPreparing(support::Input(dump));
    return FindingsOf(dump) + PreparedText(dump);
  } catch (const Failure& failure) {
    return std::string("refused: ") + failure.what() + "\n";
  }
}

using FreeFormat = FreshState;

TEST_F(FreeFormat, ReadsDumpsAsTheySay) {
  ExpectCases("tests/cases/free_format",
              [](const Case& of, const std::string&) { return AllOf(of.dump); });
}

TEST(Check, NamesWhatIsNoDump) {
  const std::pair<std::string, const char*> rows[] = {
      {"\x1F\x8B\x08", "gzip"},
      {"\x28\xB5\x2F\xFD", "zstd"},
      {std::string("\0\0\0\0\0\0\0\x01\x49", 9), "FST"},
      {std::string("\x13\x80\0\x01", 4), "LXT2"},
      {"\x01\x38", "LXT,"},
      {"version https://git-lfs.github.com/spec/v1\noid", "git lfs pull"},
      {std::string("\xFF\xFE$\0d\0", 6), "UTF-16"},
      {std::string("$\0d\0a\0", 6), "UTF-16"},
      {std::string("\0$\0d", 4), "UTF-16"},
      {std::string("\x7F\x45LF\0\0", 6), "a binary file"},
      {"[*]\n[*] GTKWave Analyzer v3.3\n[dumpfile] \"/a/b.vcd\"\n", "a GTKWave save file"},
      {"\n[dumpfile] \"b.vcd\"\n", "a GTKWave save file"},
      {"#! /usr/bin/vvp\n:ivl_version \"11.0\"", "a compiled simulation"},
      {":ivl_version \"11.0\"", "a compiled simulation"},
      {"", "is empty"},
      {"hello\n", "declares no variable"}};
  for (const auto& [bytes, message] : rows) {
    for (const std::size_t chunk : {std::size_t{1}, std::string::npos}) {
      TextSource source(bytes, chunk);
      std::string said;
      try {
        CheckDump(source, "d");
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind(), FailureKind::Unusable);
        said = failure.what();
      }
      EXPECT_NE(said.find(message), std::string::npos) << message << " is not in: " << said;
    }
  }
}

// One of each simulator, and those that are read in another way than they look.
TEST_F(FreeFormat, FindsWhatIsKnownOfRealDumps) {
  const char* const folder = std::getenv("KESNCD_REAL_DUMPS");
  if (folder == nullptr) GTEST_SKIP() << "KESNCD_REAL_DUMPS names no folder of dumps";
  const std::string page = "tests/cases/real_dumps.txt";
  EXPECT_EQ(CasesIn(page).size(), DumpsIn(folder).size());
  ExpectCases(page, [&](const Case& of, const std::string&) {
    try {
      return FindingsOf(ReadAll(std::string(folder) + "/" + of.name + ".vcd"));
    } catch (const Failure& failure) {
      return std::string("refused: ") + failure.what() + "\n";
    }
  });
}

}  // namespace
}  // namespace orsa::kesncd
