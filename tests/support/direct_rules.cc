// Direct counts against an account item by item and against prepared dumps.
#include "tests/support/reading_rules.h"

#include <optional>
#include <set>

#include "activity/host_run.h"
#include "kesncd/kesncd.h"
#include "tests/support/dump_figures.h"
#include "tests/support/require.h"
#include "tests/support/text_stream.h"
#include "text/failure.h"
#include "vcd/time_text.h"

using namespace orsa::kesncd;

namespace support {

namespace {

std::optional<HostRun> Count(const std::string& dump, const TimeWindow& window) {
  TextSource source(dump, kSmallBlock / 3);
  try {
    return ReadHostRun(source, "", window, kSmallBlock);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

/// A name that two codes have in a scope has the changes of both, a code that a scope names alike
/// twice counts once.
Figures FiguresOf(const HostRun& run) {
  Figures figures;
  std::set<std::pair<std::pair<std::string, std::string>, std::uint32_t>> seen;
  for (const DumpVariable& variable : run.declarations.variables) {
    const std::pair key(run.declarations.PathOf(variable.scope), variable.name);
    if (seen.emplace(key, variable.codeId).second) figures[key] += run.ChangesOf(variable);
  }
  return figures;
}

/// Whether a prepared dump can call everything as the dump does.
bool KeepsNames(const PrepareReport& report) {
  return !report.renamed && !report.leftOut;
}

Figures WithoutRoot(const Figures& figures, const std::string& root) {
  if (root.empty()) return figures;
  Figures without;
  for (const auto& [signal, changes] : figures) {
    const bool isInRoot = signal.first == root;
    without[{isInRoot ? "" : signal.first.substr(root.size() + 1), signal.second}] = changes;
  }
  return without;
}

}  // namespace

void CheckCountingDirectly(const Input& input) {
  PrepareOptions options;
  options.block = kSmallBlock;
  options.window.begin = Femtoseconds(input.Option(0));
  options.window.end = Femtoseconds(input.Option(1));
  const std::optional<HostRun> run = Count(input.text, options.window);
  TextSource source(input.text, std::string::npos);
  TextSink sink;
  std::optional<PrepareReport> report;
  try {
    report = PrepareDump(source, sink, options);
  } catch (const Failure&) {
  }
  Require(run.has_value() == report.has_value(), "only one of the two ways refuses the dump");
  if (!run) return;
  const Figures figures = FiguresOf(*run);
  if (!options.window.begin && !options.window.end) {
    const Figures plain = ItemFigures(input.text).figures;
    Require(figures == plain, [&] {
      return "counted directly:" + TextOf(figures) + "\nitem by item:" + TextOf(plain);
    });
  }
  if (!KeepsNames(*report)) return;
  const Figures prepared = WithoutRoot(TreeFigures(sink.text), report->addedRoot);
  Require(figures == prepared,
          [&] { return "counted directly:" + TextOf(figures) + "\nprepared:" + TextOf(prepared); });
  if (report->stamps == 0) return;
  Require(run->firstTick == startCycle && run->lastTick == endCycle,
          "the spans differ: " + std::to_string(run->firstTick) + " to " +
              std::to_string(run->lastTick) + " and " + std::to_string(startCycle) + " to " +
              std::to_string(endCycle));
  if (run->nsPerTick) Require(*run->nsPerTick == timeScale, "the time scales differ");
}

}  // namespace support
