// The rewrite of a dump: preparing it again changes nothing, `check` has nothing left to say that
// preparing mends, and every reader finds what the dump said. The options are the scope that goes
// first, the tick of a dump without one, and the begin and end of a window.
#include <algorithm>
#include <limits>

#include "free_format/declaration_reader.h"
#include "free_format/dump_findings.h"
#include "fuzz/prepared_dump.h"
#include "fuzz/support.h"
#include "kesncd/kesncd.h"
#include "tests/reader_state.h"
#include "tests/text_stream.h"
#include "vcd/time_text.h"

using namespace orsa::kesncd;

namespace {

using orsa::kesncd::TextSource;

PrepareOptions OptionsOf(const fuzz::Input& input) {
  PrepareOptions options;
  options.top = input.Option(0);
  options.tick = Femtoseconds(input.Option(1));
  if (options.tick == 0U) options.tick.reset();
  options.begin = Femtoseconds(input.Option(2));
  options.end = Femtoseconds(input.Option(3));
  if (options.begin && options.end && *options.begin > *options.end) options.end.reset();
  return options;
}

/// What a prepared dump may still be told of: what its names and its simulation are like.
bool MayStay(FindingKind kind) {
  static constexpr FindingKind kStaying[] = {
      FindingKind::NoTimescale, FindingKind::NoSpan,           FindingKind::Backward,
      FindingKind::EmptyTop,    FindingKind::BeforeFirstStamp, FindingKind::Unknown,
      FindingKind::Escaped,     FindingKind::TwoIndices,       FindingKind::Parentheses,
      FindingKind::Collisions,  FindingKind::WideRanges};
  return std::find(std::begin(kStaying), std::end(kStaying), kind) != std::end(kStaying);
}

void CheckFindings(const std::string& prepared) {
  constexpr std::size_t kLongestLine = 1000;
  for (const std::string& line : fuzz::Lines(prepared)) {
    fuzz::Require(line.size() < kLongestLine, "every reader takes a line whole: " + line);
  }
  TextSource source(prepared, std::string::npos);
  const DumpCheck check = CheckDump(source, "");
  for (const Finding& finding : check.findings) {
    fuzz::Require(MayStay(finding.kind), "left over: " + std::string(TextOf(finding.kind).finding) +
                                             " " + finding.tally.example + "\n" + prepared);
  }
}

void ReadByGrammar(std::FILE* stream) {
  const fuzz::Quiet quiet;
  orsa::kesncd::ParseVcdFile(stream);
}

/// What the reader of that number finds in a module.
fuzz::Figures FlatFigures(const std::string& prepared, const std::string& path, int reader,
                          const std::set<std::string>& selection) {
  ResetReaderState();
  KesNCD analyser;
  analyser.SetTopModule(path.substr(path.rfind('/') + 1));
  const TextStream stream(prepared);
  if (reader == 0) analyser.ParseVcdFile(stream);
  if (reader == 1) analyser.ParseVcdFile2(stream, selection);
  if (reader == 2) ReadByGrammar(stream);
  fuzz::Figures figures;
  for (int i = 0; i < topMod.GetSignalSize(); ++i) {
    figures[{path, topMod.GetSignalName(i)}] += topMod.GetSignalChange(i);
  }
  return figures;
}

/// Whether a scope's name holds the character that parts the names of a path.
bool HoldsOddScope(const std::string& prepared) {
  const std::vector<std::string> lines = fuzz::Lines(prepared);
  return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("$scope") && line.find('/') != std::string::npos;
  });
}

/// Every reader of one module against the tree, for some modules whose names no others have.
void CheckFlatReaders(const std::string& prepared, const fuzz::Figures& tree,
                      const fuzz::PlainFigures& plain) {
  constexpr std::size_t kMostModules = 8;
  std::map<std::string, fuzz::Figures> modules;
  std::set<std::string> selection;
  for (const auto& [signal, changes] : tree) {
    if (modules.size() < kMostModules || modules.contains(signal.first)) {
      modules[signal.first].insert({signal, changes});
    }
    selection.insert(signal.second);
  }
  for (const auto& [path, expected] : modules) {
    const std::string scope = "$scope module " + path.substr(path.rfind('/') + 1) + " $end\n";
    const std::size_t at = prepared.find(scope);
    if (at == std::string::npos || prepared.find(scope, at + 1) != std::string::npos) continue;
    for (const int reader : {0, 1, 2}) {
      const fuzz::Figures figures = FlatFigures(prepared, path, reader, selection);
      fuzz::Require(figures == expected, "tree" + fuzz::TextOf(expected) + "\nreader " +
                                             std::to_string(reader) + fuzz::TextOf(figures) + "\n" +
                                             prepared);
      const bool sameSpan =
          orsa::kesncd::startCycle == plain.first && orsa::kesncd::endCycle == plain.last;
      fuzz::Require(sameSpan, "the span of reader " + std::to_string(reader) + "\n" + prepared);
    }
  }
}

void CheckReaders(const std::string& dump, const std::string& prepared) {
  const fuzz::PlainFigures plain = fuzz::ItemFigures(dump);
  const fuzz::Figures tree = fuzz::TreeFigures(prepared);
  fuzz::Require(startCycle == plain.first && endCycle == plain.last, "the span\n" + prepared);
  fuzz::Figures named;  // scopes may have been put under a common one
  for (const auto& [signal, changes] : tree) {
    std::string path = signal.first;
    if (plain.figures.count({path, signal.second}) == 0) {
      path = path.find('/') == std::string::npos ? "" : path.substr(path.find('/') + 1);
    }
    named[{path, signal.second}] += changes;
  }
  fuzz::Require(named == plain.figures, "the dump says" + fuzz::TextOf(plain.figures) +
                                            "\nprepared" + fuzz::TextOf(named) + "\n" + prepared);
  if (!HoldsOddScope(prepared)) CheckFlatReaders(prepared, tree, plain);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Input input(data, size);
  const PrepareOptions options = OptionsOf(input);
  const auto prepared = fuzz::Prepare(input.text, options);
  fuzz::Require(fuzz::Prepare(input.text, options, 3) == prepared, "reads of any size do");
  if (!prepared) return 0;
  fuzz::Require(fuzz::Prepare(*prepared) == prepared, "prepared again:\n" + *prepared);
  CheckFindings(*prepared);
  if (!options.begin && !options.end) CheckReaders(input.text, *prepared);
  return 0;
}
