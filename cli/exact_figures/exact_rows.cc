// Rows of exact activity, in the dump's order unless another one is asked for.
#include "cli/exact_figures/exact_rows.h"

#include "activity/activity_rows.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

std::string TextOf(RowsPer per) {
  switch (per) {
    case RowsPer::Bit:
      return "bit";
    case RowsPer::Module:
      return "module";
    case RowsPer::Signal:
      break;
  }
  return "signal";
}

std::int64_t CountOf(const Tally& tally) {
  return static_cast<std::int64_t>(tally.count);
}

Facts FactsOf(const ExactRun& run, const std::string& per) {
  const ActivityResult& result = run.result;
  const ActivityNotes& notes = result.notes;
  const ItemTallies& items = notes.items;
  const std::string scope = result.declarations.PathOf(run.scope);
  Facts facts{{"dump", run.origin},
              {"figures", std::string("exact")},
              {"per", per},
              {"scope", scope.empty() ? Cell() : Cell(scope)},
              {"tick_fs", result.tick ? Cell(WideCount{*result.tick}) : Cell()},
              {"begin", WideCount{result.firstTick}},
              {"end", WideCount{result.lastTick}},
              {"observed", WideCount{result.observedTicks}}};
  if (!run.scale.clock.name.empty()) {
    facts.emplace_back("clock", run.scale.clock.name);
    facts.emplace_back("time_factor", run.scale.Factor());
  }
  facts.insert(facts.end(), {{"variables_of_types_without_bits", CountOf(notes.typesWithoutBits)},
                             {"variables_without_width", CountOf(notes.withoutBits)},
                             {"undeclared_changes", CountOf(items.undeclared)},
                             {"stray_words", CountOf(items.strays)},
                             {"bad_stamps", CountOf(items.badStamps)},
                             {"cut_stamps", CountOf(items.cutStamp)},
                             {"backward_stamps", WideCount{notes.backwardStamps}},
                             {"dumping_pauses", WideCount{notes.pauses}},
                             {"end_cut_back", std::int64_t{notes.isEndCutBack ? 1 : 0}}});
  return facts;
}

ResultHead HeadOf(const ExactRun& run, const std::string& per) {
  ResultHead head{FactsOf(run, per), per + "s", {}};
  if (per == "bit" || per == "pin") {
    head.columns = {"path", "t0", "t1", "tx", "tz", "tc", "ig"};
  } else {
    head.columns = {"path", "bits", "toggles", "ig", "t0", "t1", "tx", "tz"};
  }
  head.columns.insert(head.columns.end(), {"freq_mhz", "toggle_rate", "high"});
  return head;
}

/// What is made of figures, row by row.
class ExactRows {
 public:
  ExactRows(const ExactRun& run, const ExactOptions& options, ResultOutput& out)
      : run_(run),
        declarations_(run.result.declarations),
        rows_(run.result),
        filter_(options.selection.match),
        selected_(options.selection, out) {}

  void Write(RowsPer per) {
    if (per == RowsPer::Module) {
      WriteModules();
    } else {
      rows_.ForEachSignal(run_.scope, [&](const SignalRow& row) {
        TakeScope(row.variable.scope);
        per == RowsPer::Bit ? WriteBits(row) : WriteSignal(row);
      });
    }
    selected_.Finish();
  }

  void Write(const NetlistPins& pins) {
    std::string cell;
    pins.ForEachPin([&](const CellPin& pin) {
      if (!pin.figures) return;
      cell.clear();
      pins.AppendCellPath(pin, cell);
      if (filter_.Takes(cell, pin.name)) WriteBit(cell + '/' + pin.name, *pin.figures);
    });
    selected_.Finish();
  }

 private:
  void TakeScope(std::uint32_t scope) {
    hasScopePath_ = hasScopePath_ && scope == scope_;
    scope_ = scope;
  }

  /// Signals of a scope mostly come together: its path is made once, and only if a row needs it.
  const std::string& ScopePath() {
    if (!hasScopePath_) scopePath_ = declarations_.PathOf(scope_);
    hasScopePath_ = true;
    return scopePath_;
  }

  std::string PathOf(std::string_view name) {
    std::string path = ScopePath();
    if (!path.empty()) path += '/';
    path += name;
    return path;
  }

  template <class Figures>
  bool Wants(const Figures& figures) const {
    return selected_.Wants(static_cast<double>(figures.tc),
                           RatesOf(figures, run_.result).toggleRate);
  }

  void WriteBits(const SignalRow& row) {
    const bool takesAll = filter_.IsOpen() || TakesSignal(filter_, ScopePath(), row.variable);
    for (auto bit = static_cast<std::uint32_t>(row.figures.size()); bit-- > 0;) {
      if (row.IsRepeated(bit) || !Wants(row.figures[bit])) continue;
      name_.clear();
      row.names.AppendName(bit, name_);
      if (takesAll || filter_.Takes(ScopePath(), name_)) WriteBit(PathOf(name_), row.figures[bit]);
    }
  }

  void WriteBit(const std::string& path, const BitFigures& figures) {
    Row row{path,
            WideCount{figures.t0},
            WideCount{figures.t1},
            WideCount{figures.tx},
            WideCount{figures.tz},
            WideCount{figures.tc},
            WideCount{figures.ig}};
    Add(std::move(row), static_cast<double>(figures.tc), RatesOf(figures, run_.result));
  }

  void WriteSignal(const SignalRow& row) {
    if (row.IsWhollyRepeated()) return;
    ActivitySums sums;
    sums.Add(row.figures);
    if (!Wants(sums)) return;
    if (!filter_.IsOpen() && !TakesSignal(filter_, ScopePath(), row.variable)) return;
    WriteSums(PathOf(row.variable.name), sums);
  }

  void WriteModules() {
    const std::vector<ActivitySums> sums = rows_.ModuleSums();
    const std::vector<bool> inside = rows_.ScopesIn(run_.scope);
    for (std::uint32_t scope = Declarations::kDump + 1; scope < sums.size(); ++scope) {
      if (!inside[scope] || sums[scope].bits == 0 || !Wants(sums[scope])) continue;
      TakeScope(declarations_.scopes[scope].parent);
      const std::string& name = declarations_.scopes[scope].name;
      if (filter_.IsOpen() || filter_.Takes(ScopePath(), name))
        WriteSums(PathOf(name), sums[scope]);
    }
  }

  void WriteSums(const std::string& path, const ActivitySums& sums) {
    Row row{
        path,   static_cast<std::int64_t>(sums.bits), sums.tc, sums.ig, sums.t0, sums.t1, sums.tx,
        sums.tz};
    Add(std::move(row), static_cast<double>(sums.tc), RatesOf(sums, run_.result));
  }

  void Add(Row row, double toggles, const ActivityRates& rates) {
    const double factor = run_.scale.Factor();
    const auto scaled = [factor](const std::optional<double>& rate) {
      return rate ? Cell(*rate / factor) : Cell();
    };
    row.push_back(scaled(rates.freqMhz));
    row.push_back(scaled(rates.toggleRate));
    row.push_back(rates.high ? Cell(*rates.high) : Cell());
    const SortKeys keys{std::get<std::string>(row.front()), toggles, rates.toggleRate};
    selected_.Add(keys, row);
  }

  const ExactRun& run_;
  const Declarations& declarations_;
  const ActivityRows rows_;
  const PathFilter filter_;
  SelectedRows selected_;
  std::uint32_t scope_ = Declarations::kDump;
  bool hasScopePath_ = false;
  std::string scopePath_;
  std::string name_;
};

/// A dump whose variables have no bits has a result without rows; else something was asked for that
/// is not there.
ExitStatus RowsStatus(const ExactRun& run, const ResultOutput& out, const ExactOptions& options,
                      const std::string& per) {
  const bool wasChosen =
      !options.scope.empty() || !options.selection.match.empty() || !options.netlist.empty();
  if (out.rows() > 0 || !wasChosen || options.selection.limit == 0) return ExitStatus::Done;
  Say(run.dump, "no " + per + " was selected");
  return ExitStatus::NothingMatched;
}

/// Variables outside every scope are rows of bits and of signals, but no module.
void SayWhatNoModuleHas(const ExactRun& run) {
  const Declarations& declarations = run.result.declarations;
  const std::size_t outside = declarations.scopes[Declarations::kDump].variables.size();
  if (run.scope != Declarations::kDump || outside == 0) return;
  Remark(run.dump,
         "variables outside every scope, which are in no module's row: " + std::to_string(outside));
}

}  // namespace

bool TakesSignal(const PathFilter& filter, const std::string& scopePath,
                 const DumpVariable& variable) {
  return filter.Takes(scopePath, variable.name) ||
         filter.Takes(scopePath, BitNames(variable).Base());
}

ExitStatus WriteExactRows(const ExactRun& run, const ExactOptions& options) {
  const ResultHead head = HeadOf(run, TextOf(options.per));
  ResultOutput out(options.output, head);
  ExactRows(run, options, out).Write(options.per);
  out.End();
  if (options.per == RowsPer::Module) SayWhatNoModuleHas(run);
  return RowsStatus(run, out, options, TextOf(options.per));
}

ExitStatus WritePinRows(const ExactRun& run, const NetlistPins& pins, const ExactOptions& options) {
  const ResultHead head = HeadOf(run, "pin");
  ResultOutput out(options.output, head);
  ExactRows(run, options, out).Write(pins);
  out.End();
  return RowsStatus(run, out, options, "pin");
}

}  // namespace orsa::kesncd::cli
