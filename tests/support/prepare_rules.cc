// How a prepared dump is judged: by preparing it again, by `check`, and by all readers.
#include "tests/support/reading_rules.h"

#include <algorithm>
#include <limits>

#include "free_format/declaration_reader.h"
#include "free_format/findings/dump_findings.h"
#include "kesncd/kesncd.h"
#include "tests/support/dump_figures.h"
#include "tests/support/input.h"
#include "tests/support/reader_state.h"
#include "tests/support/require.h"
#include "tests/support/streams.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/time_text.h"

using namespace orsa::kesncd;

namespace {

using orsa::kesncd::TextSource;

PrepareOptions OptionsOf(const support::Input& input) {
  PrepareOptions options;
  const std::string top = input.Option(0);
  if (!top.empty()) {
    options.chooseTop = [top](const Declarations& declarations) -> std::uint32_t {
      for (std::uint32_t scope = 1; scope < declarations.scopes.size(); ++scope) {
        if (declarations.scopes[scope].name == top) return scope;
      }
      throw Failure(FailureKind::NothingMatched, "no scope " + top);
    };
  }
  options.tick = Femtoseconds(input.Option(1));
  if (options.tick == 0U) options.tick.reset();
  options.window.begin = Femtoseconds(input.Option(2));
  options.window.end = Femtoseconds(input.Option(3));
  if (options.window.begin && options.window.end && *options.window.begin > *options.window.end)
    options.window.end.reset();
  return options;
}

/// What a prepared dump may still be told of: what its names and its simulation are like.
bool MayStay(FindingKind kind) {
  static constexpr FindingKind kStaying[] = {
      FindingKind::NoTimescale,      FindingKind::NoSpan,      FindingKind::Backward,
      FindingKind::DumpingOff,       FindingKind::HugeStamps,  FindingKind::EmptyTop,
      FindingKind::BeforeFirstStamp, FindingKind::Unknown,     FindingKind::StaysUnknown,
      FindingKind::TurnsUnknown,     FindingKind::UnknownBits, FindingKind::Escaped,
      FindingKind::TwoIndices,       FindingKind::Parentheses, FindingKind::Collisions,
      FindingKind::WideRanges};
  return std::find(std::begin(kStaying), std::end(kStaying), kind) != std::end(kStaying);
}

void CheckFindings(const std::string& prepared) {
  constexpr std::size_t kLongestLine = 1000;
  for (const std::string& line : support::Lines(prepared)) {
    support::Require(line.size() < kLongestLine,
                     [&] { return "every reader takes a line whole: " + line; });
  }
  TextSource source(prepared, std::string::npos);
  const DumpCheck check = CheckDump(source, "", "", support::kSmallBlock);
  for (const Finding& finding : check.findings) {
    support::Require(MayStay(finding.kind),
                     "left over: " + std::string(TextOf(finding.kind).finding) + " " +
                         finding.tally.example + "\n" + prepared);
  }
}

void ReadByGrammar(std::FILE* stream) {
  const support::Quiet quiet;
  orsa::kesncd::ParseVcdFile(stream);
}

/// What the reader of that number finds in a module.
support::Figures FlatFigures(const std::string& prepared, const std::string& path, int reader,
                             const std::set<std::string>& selection) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(path.substr(path.rfind('/') + 1));
  const TextStream stream(prepared);
  if (reader == 0) analyser.ParseVcdFile(stream);
  if (reader == 1) analyser.ParseVcdFile2(stream, selection);
  if (reader == 2) ReadByGrammar(stream);
  support::Figures figures;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    figures[{path, topMod.GetSignalName(i)}] += topMod.GetSignalChange(i);
  }
  return figures;
}

/// Whether a scope's name holds the character that parts the names of a path.
bool HoldsOddScope(const std::string& prepared) {
  const std::vector<std::string> lines = support::Lines(prepared);
  return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("$scope") && line.find('/') != std::string::npos;
  });
}

/// Every reader of one module against the tree, for some modules whose names no others have.
void CheckFlatReaders(const std::string& prepared, const support::Figures& tree,
                      const support::PlainFigures& plain) {
  constexpr std::size_t kMostModules = 2;  // each is read three times
  std::map<std::string, support::Figures> modules;
  std::set<std::string> selection;
  for (const auto& [signal, changes] : tree) {
    if (modules.size() < kMostModules || modules.contains(signal.first)) {
      modules[signal.first].insert({signal, changes});
    }
    selection.insert(signal.second);
  }
  for (const auto& module : modules) {
    const auto& path = module.first;
    const auto& expected = module.second;
    const std::string scope = "$scope module " + path.substr(path.rfind('/') + 1) + " $end\n";
    const std::size_t at = prepared.find(scope);
    if (at == std::string::npos || prepared.find(scope, at + 1) != std::string::npos) continue;
    for (const int reader : {0, 1, 2}) {
      const support::Figures figures = FlatFigures(prepared, path, reader, selection);
      support::Require(figures == expected, [&] {
        return "tree" + support::TextOf(expected) + "\nreader " + std::to_string(reader) +
               support::TextOf(figures) + "\n" + prepared;
      });
      const bool sameSpan =
          orsa::kesncd::startCycle == plain.first && orsa::kesncd::endCycle == plain.last;
      support::Require(sameSpan, [&] {
        return "the span of reader " + std::to_string(reader) + "\n" + prepared;
      });
    }
  }
}

/// Whether the rewrite gives one of the signals another name: keywords and names that are too long
/// for a line cannot stay.
bool AreRenamed(const support::Figures& figures) {
  constexpr std::size_t kSafe = 750;
  for (const auto& [signal, changes] : figures) {
    const auto& [path, name] = signal;
    if (path.size() > kSafe || name.size() > kSafe || name.front() == '$') return true;
    if (path.starts_with('$') || path.find("/$") != std::string::npos) return true;
  }
  return false;
}

/// The changes alone, smallest first.
std::vector<std::int64_t> CountsOf(const support::Figures& figures) {
  std::vector<std::int64_t> counts;
  for (const auto& [signal, changes] : figures) counts.push_back(changes);
  std::sort(counts.begin(), counts.end());
  return counts;
}

void CheckReaders(const std::string& dump, const std::string& prepared) {
  const support::PlainFigures plain = support::ItemFigures(dump);
  const support::Figures tree = support::TreeFigures(prepared);
  support::Require(startCycle == plain.first && endCycle == plain.last,
                   [&] { return "the span\n" + prepared; });
  support::Figures named;  // scopes may have been put under a common one
  for (const auto& [signal, changes] : tree) {
    std::string path = signal.first;
    if (plain.figures.count({path, signal.second}) == 0) {
      path = path.find('/') == std::string::npos ? "" : path.substr(path.find('/') + 1);
    }
    named[{path, signal.second}] += changes;
  }
  const bool isSame = AreRenamed(plain.figures) ? CountsOf(named) == CountsOf(plain.figures)
                                                : named == plain.figures;
  support::Require(isSame, [&] {
    return "the dump says" + support::TextOf(plain.figures) + "\nprepared" +
           support::TextOf(named) + "\n" + prepared;
  });
  if (!HoldsOddScope(prepared)) CheckFlatReaders(prepared, tree, plain);
}

}  // namespace

void support::CheckPreparing(const Input& input) {
  const PrepareOptions options = OptionsOf(input);
  const auto prepared = support::Prepare(input.text, options);
  support::Require(support::Prepare(input.text, options, 3) == prepared, "reads of any size do");
  if (!prepared) return;
  support::Require(support::Prepare(*prepared) == prepared,
                   [&] { return "prepared again:\n" + *prepared; });
  CheckFindings(*prepared);
  if (!options.window.begin && !options.window.end) CheckReaders(input.text, *prepared);
}
