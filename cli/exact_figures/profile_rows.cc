// Rows of profiles: for reading with a bar, for programs with every module.
//
// The same rows serve two readers. A table has times with units, the busiest modules and a bar of
// the row's toggles. The other formats have ticks, which are exact, and a column for every module
// that declares anything; their columns never depend on the figures, so that runs of a design can
// be put side by side.
#include "cli/exact_figures/profile_rows.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <utility>

#include "activity/activity_rows.h"
#include "cli/output/path_ending.h"
#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

constexpr double kMicrosecond = 1e9;  // in femtoseconds
// More columns do not fit on a terminal; --wide shows all.
constexpr std::size_t kTableModules = 6;
// Scopes in one another have paths of all that is around them, n levels some n * n characters: more
// than so many are of a corrupt dump.
constexpr std::size_t kMostPathBytes = std::size_t{1} << 26U;

// What the output will be in the end: a path's ending or --format decides, else it is a table.
bool IsTable(const OutputOptions& output) {
  return ChosenFormat(output.format, output.path, RowFormats(), Format::Table) == Format::Table;
}

/// A time as options take it, which a table shows: "1250ns"; ticks where there is no time scale.
std::string TimeOf(std::uint64_t ticks, const ActivityResult& base) {
  std::uint64_t femtoseconds = 0;
  if (!base.tick || __builtin_mul_overflow(ticks, *base.tick, &femtoseconds)) {
    return std::to_string(ticks) + " ticks";
  }
  return TimeText(femtoseconds);
}

/// A table shows times in units, which can be pasted as options; programs get ticks, which they can
/// compare.
Cell TimeCell(std::uint64_t ticks, const ActivityResult& base, bool isTable) {
  return isTable ? Cell(TimeOf(ticks, base)) : Cell(WideCount{ticks});
}

/// Toggles a microsecond, not per bit; nothing without a time scale.
Cell RateOf(std::uint64_t toggles, std::uint64_t ticks, const ActivityResult& base) {
  if (!base.tick || ticks == 0) return {};
  const double microseconds =
      static_cast<double>(ticks) * static_cast<double>(*base.tick) / kMicrosecond;
  return static_cast<double>(toggles) / microseconds;
}

/// As long as `part` is of `whole`, but something for whatever is not nothing. In "#", 40 at most,
/// so that a row fits beside its figures.
std::string BarOf(std::uint64_t part, std::uint64_t whole) {
  constexpr double kLongest = 40;
  if (part == 0) return "";
  const double length = kLongest * static_cast<double>(part) / static_cast<double>(whole);
  return std::string(static_cast<std::size_t>(std::max(std::round(length), 1.0)), '#');
}

/// The rows' columns after those of their own: toggles with their rate, a column for each module in
/// the scope, and in a table a bar. Calling order: construct, AppendTo for the heading, AppendTo
/// for each row. Which modules have columns is decided in the constructor, the same for all rows.
class ToggleColumns {
 public:
  /// `totals` are the toggles of modules over all rows, `most` those of the busiest row, which has
  /// the longest bar.
  ToggleColumns(const ModuleTree& tree, const std::vector<std::uint64_t>& totals,
                std::uint64_t most, const ActivityResult& base, const OutputOptions& output)
      : base_(base), isTable_(IsTable(output)), most_(most) {
    // Module 0 is the scope itself, whose toggles are the column "toggles".
    for (std::uint32_t module = 1; module < tree.size(); ++module) {
      if (HasBits(tree, module)) shown_.push_back(module);
    }
    if (isTable_ && !output.look.isWide) KeepMostActive(totals);
    TakePaths(tree);
  }

  /// To the heading, after the columns of the rows themselves.
  void AppendTo(std::vector<Column>& columns) const {
    columns.insert(columns.end(), {"toggles", "toggles_per_us"});
    // Names of columns that are not modules.
    std::set<std::string> taken;
    for (const Column& column : columns) taken.insert(column.name);
    for (std::string name : paths_) {
      // A top-level scope may be called like a column; a program must know the two apart.
      if (!isTable_ && taken.contains(name)) name += '/';
      columns.emplace_back(std::move(name), false);
    }
    if (isTable_) columns.emplace_back("bar");
  }

  /// `toggles` gives those of a module.
  template <class TogglesOf>
  void AppendTo(Row& row, std::uint64_t observed, TogglesOf toggles) const {
    // Of the scope itself.
    const std::uint64_t all = toggles(0);
    row.emplace_back(WideCount{all});
    // By the time that was observed, not by the length of the window.
    row.push_back(RateOf(all, observed, base_));
    for (const std::uint32_t module : shown_) row.emplace_back(WideCount{toggles(module)});
    if (isTable_) row.emplace_back(BarOf(all, most_));
  }

  bool isTable() const { return isTable_; }
  std::size_t hidden() const { return hidden_; }
  const std::vector<std::string>& paths() const { return paths_; }

 private:
  /// Whether a module declares anything, itself or below: others have no figures.
  bool HasBits(const ModuleTree& tree, std::uint32_t module) const {
    return base_.declarations.scopes[tree.scopes[module]].populated;
  }

  /// As many as a table has room for, in the dump's order again.
  void KeepMostActive(const std::vector<std::uint64_t>& totals) {
    if (shown_.size() <= kTableModules) return;
    hidden_ = shown_.size() - kTableModules;
    std::stable_sort(shown_.begin(), shown_.end(), [&](std::uint32_t one, std::uint32_t other) {
      return totals[one] > totals[other];
    });
    shown_.resize(kTableModules);
    std::sort(shown_.begin(), shown_.end());
  }

  /// For the columns, and for the list of modules in JSON.
  void TakePaths(const ModuleTree& tree) {
    std::size_t bytes = 0;
    for (const std::uint32_t module : shown_) {
      paths_.push_back(base_.declarations.PathOf(tree.scopes[module]));
      bytes += paths_.back().size();
      if (bytes <= kMostPathBytes) continue;
      throw Failure(FailureKind::Unusable,
                    "the paths of modules down to this depth have more than " +
                        std::to_string(kMostPathBytes) + " characters; ask for a smaller --depth");
    }
  }

  const ActivityResult& base_;
  const bool isTable_;
  const std::uint64_t most_;
  std::vector<std::uint32_t> shown_;  // modules, in the dump's order
  std::vector<std::string> paths_;    // of these
  std::size_t hidden_ = 0;
};

/// The facts of JSON; null for what is not known. `begin` and `end` are the span that was counted,
/// in ticks like everything that programs get.
Facts ProfileFacts(const ActivityResult& base, const ProfileSubject& subject,
                   const ModuleTree& tree) {
  const std::string scope = base.declarations.PathOf(tree.scopes.front());
  return {{"dump", subject.dump},
          {"figures", std::string("exact")},
          {"per", subject.cut},
          {"signal", subject.signal.empty() ? Cell() : Cell(subject.signal)},
          {"scope", scope.empty() ? Cell() : Cell(scope)},
          {"tick_fs", base.tick ? Cell(WideCount{*base.tick}) : Cell()},
          {"begin", WideCount{base.firstTick}},
          {"end", WideCount{base.lastTick}},
          {"observed", WideCount{base.observedTicks}}};
}

/// For a table's last line. A column that is missing has to be said: rows of a table look complete.
/// Empty where none is hidden, as in all formats but tables.
std::string HiddenText(std::size_t hidden) {
  if (hidden == 0) return "";
  return "; " + std::to_string(hidden) +
         " modules with fewer toggles are not shown, --wide shows them";
}

// Empty for a module that never toggled.
std::uint64_t SumOf(const std::vector<std::uint64_t>& row) {
  return std::accumulate(row.begin(), row.end(), std::uint64_t{0});
}

}  // namespace

/// In two steps: which modules have columns depends on all windows, so totals come first, then a
/// row a window.
ExitStatus WriteProfile(const ProfileRun<Profile>& run, const ProfileSubject& subject,
                        const OutputOptions& output) {
  const auto& [base, profile, right] = run;
  // By module, over all windows.
  std::vector<std::uint64_t> totals;
  for (const auto& row : profile.toggles) totals.push_back(SumOf(row));
  // The longest bar is the busiest window's. Of the scope, which is module 0.
  const std::vector<std::uint64_t>& all = profile.toggles.front();
  const std::uint64_t most = all.empty() ? 0 : *std::max_element(all.begin(), all.end());
  const ToggleColumns toggles(profile.modules, totals, most, base, output);
  ResultHead head{ProfileFacts(base, subject, profile.modules),
                  "windows",
                  {"begin", "end"},
                  "-",
                  {{"modules", toggles.paths()}}};
  head.facts.emplace_back("folded", std::int64_t{profile.isFolded ? 1 : 0});
  head.facts.emplace_back("toggles", WideCount{totals.front()});
  if (!toggles.isTable()) head.columns.emplace_back("observed");
  toggles.AppendTo(head.columns);
  ResultOutput out(output, head);
  for (std::size_t window = 0; window < profile.windows(); ++window) {
    Row row{TimeCell(profile.edges[window], base, toggles.isTable()),
            TimeCell(profile.edges[window + 1], base, toggles.isTable())};
    // Less than end - begin where dumping was off.
    if (!toggles.isTable()) row.emplace_back(WideCount{profile.observed[window]});
    toggles.AppendTo(row, profile.observed[window],
                     [&profile = profile, window](std::size_t module) {
                       return profile.TogglesOf(module, window);
                     });
    out.Add(row);
  }
  out.End({{},
           {},
           std::to_string(totals.front()) + " toggles in " + std::to_string(profile.windows()) +
               " windows" + HiddenText(toggles.hidden())});
  return ExitStatus::Done;
}

/// Rows are in the order of values, as a table of states is read.
ExitStatus WriteSplit(const ProfileRun<ValueSplit>& run, const ProfileSubject& subject,
                      const OutputOptions& output) {
  const auto& [base, split, right] = run;
  std::vector<std::uint64_t> totals(split.modules.size());
  std::uint64_t most = 0;
  for (const ValueSplit::Part& part : split.parts) {
    for (std::size_t module = 0; module < totals.size(); ++module) {
      totals[module] += part.toggles[module];
    }
    most = std::max(most, part.toggles.front());
  }
  const ToggleColumns toggles(split.modules, totals, most, base, output);
  ResultHead head{ProfileFacts(base, subject, split.modules),
                  "values",
                  {"value", "observed", "share"},
                  "-",
                  {{"modules", toggles.paths()}}};
  head.facts.emplace_back("put_together", WideCount{split.others});
  head.facts.emplace_back("toggles", WideCount{totals.front()});
  toggles.AppendTo(head.columns);
  ResultOutput out(output, head);
  for (const ValueSplit::Part& part : split.parts) {
    // Of the time that was observed.
    const double share =
        static_cast<double>(part.observed) / static_cast<double>(base.observedTicks);
    // An empty value stands for those that were put together.
    Row row{part.value.empty() ? "others" : part.value,
            TimeCell(part.observed, base, toggles.isTable()), share};
    toggles.AppendTo(row, part.observed, [&](std::size_t module) { return part.toggles[module]; });
    out.Add(row);
  }
  out.End({{},
           {},
           std::to_string(totals.front()) + " toggles by " + std::to_string(out.rows()) +
               " values" + HiddenText(toggles.hidden())});
  return ExitStatus::Done;
}

namespace {

/// Modules or signals with their toggles.
using Ranking = std::vector<std::pair<std::uint32_t, std::uint64_t>>;

/// The most active ones first, of equal ones the earlier, and no more than are wanted. Stable, so
/// that results do not depend on the library that sorts.
void KeepMost(Ranking& ranking, std::uint64_t limit) {
  // What never toggles in the peak explains nothing of it.
  std::erase_if(ranking, [](const auto& one) { return one.second == 0; });
  std::stable_sort(ranking.begin(), ranking.end(),
                   [](const auto& one, const auto& other) { return one.second > other.second; });
  if (ranking.size() > limit) ranking.resize(limit);
}

/// In the scope, without itself: it is the row "all". A deep module is listed beside those around
/// it, so the busiest path shows from the top down.
Ranking RankedModules(const ActivityRows& rows, std::uint32_t scope) {
  Ranking modules;
  const std::vector<ActivitySums> sums = rows.ModuleSums();
  const std::vector<bool> inside = rows.ScopesIn(scope);
  for (std::uint32_t at = Declarations::kDump + 1; at < sums.size(); ++at) {
    if (inside[at] && at != scope)
      modules.emplace_back(at, static_cast<std::uint64_t>(sums[at].tc));
  }
  return modules;
}

/// Each signal once, by its first name. The toggles of a signal are those of all its bits.
Ranking SignalsOf(const ActivityRows& rows, std::uint32_t scope, const ActivityResult& result) {
  Ranking signals;
  std::vector<bool> isSeen(result.declarations.codes.size());
  rows.ForEachSignal(scope, [&](const SignalRow& row) {
    if (isSeen[row.variable.codeId]) return;
    isSeen[row.variable.codeId] = true;
    ActivitySums sums;
    sums.Add(row.figures);
    signals.emplace_back(row.variableId, static_cast<std::uint64_t>(sums.tc));
  });
  return signals;
}

/// Rows of what toggles in a peak. Calling order: construct, Add for each row, End. The first row
/// is the whole scope, whose share is 1; shares of modules overlap, since each has what is below
/// it.
class PeakRows {
 public:
  PeakRows(const ProfileRun<Peak>& run, const OutputOptions& output, const std::string& dump,
           const std::string& scope)
      : run_(run), isTable_(IsTable(output)), out_(output, HeadOf(run, dump, scope, isTable_)) {}

  void Add(const std::string& what, const std::string& path, std::uint64_t toggles) {
    const Peak& peak = run_.figures;
    Row row{what, path, WideCount{toggles}};
    // A share of nothing is unknown.
    row.push_back(peak.toggles == 0
                      ? Cell()
                      : Cell(static_cast<double>(toggles) / static_cast<double>(peak.toggles)));
    if (!isTable_) {
      row.emplace_back(WideCount{peak.begin});
      row.emplace_back(WideCount{peak.end});
    }
    out_.Add(row);
  }
  /// The line after a table: where the peak is.
  void End() {
    const Peak& peak = run_.figures;
    out_.End({{},
              {},
              // To be pasted: the window that other commands take.
              std::to_string(peak.toggles) + " toggles after --begin " +
                  TimeOf(peak.begin, run_.base) + " up to --end " + TimeOf(peak.end, run_.base)});
  }

 private:
  /// Before the members are there, hence static: the output is opened with it.
  static ResultHead HeadOf(const ProfileRun<Peak>& run, const std::string& dump,
                           const std::string& scope, bool isTable) {
    const ActivityResult& base = run.base;
    ResultHead head{{{"dump", dump},
                     {"figures", std::string("exact")},
                     {"scope", scope.empty() ? Cell() : Cell(scope)},
                     {"tick_fs", base.tick ? Cell(WideCount{*base.tick}) : Cell()},
                     {"grain", WideCount{run.figures.grain}}},
                    "peak",
                    {"what", "path", "toggles", "share"}};
    if (!isTable) head.columns.insert(head.columns.end(), {"begin", "end"});
    return head;
  }

  const ProfileRun<Peak>& run_;
  const bool isTable_;
  ResultOutput out_;
};

}  // namespace

/// First all of the scope, then its modules, then its signals, each list with the most active one
/// first.
ExitStatus WritePeak(const ProfileRun<Peak>& run, const ActivityResult* inPeak, std::uint32_t scope,
                     std::uint64_t limit, const std::string& dump, const OutputOptions& output) {
  const Declarations& declarations = run.base.declarations;
  const std::string path = declarations.PathOf(scope);
  PeakRows rows(run, output, dump, path);
  // "/" is the whole dump.
  rows.Add("all", path.empty() ? "/" : path, run.figures.toggles);
  // A pipe is gone by now, so only the peak itself is known.
  if (inPeak != nullptr) {
    const ActivityRows activity(*inPeak);
    Ranking modules = RankedModules(activity, scope);
    KeepMost(modules, limit);
    for (const auto& [module, toggles] : modules) {
      rows.Add("module", declarations.PathOf(module), toggles);
    }
    Ranking signals = SignalsOf(activity, scope, *inPeak);
    KeepMost(signals, limit);
    for (const auto& [signal, toggles] : signals) {
      rows.Add("signal", declarations.PathOf(declarations.variables[signal]), toggles);
    }
  }
  rows.End();
  return ExitStatus::Done;
}

}  // namespace orsa::kesncd::cli
