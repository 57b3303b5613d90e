// Rows of exact activity, in the dump's order unless another one is asked for.
#include "cli/exact_figures/exact_rows.h"

#include <algorithm>
#include <initializer_list>

#include "activity/activity_rows.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

/// The fact "per", and with an "s" the name of the rows in JSON.
std::string TextOf(RowsPer per) {
  switch (per) {
    case RowsPer::Bit:
      return "bit";
    case RowsPer::Module:
      return "module";
    // Below, as it is the usual one.
    case RowsPer::Signal:
      break;
  }
  return "signal";
}

/// Positions of a tally do not matter here, only how many there were.
std::int64_t CountOf(const Tally& tally) {
  return static_cast<std::int64_t>(tally.count);
}

/// What JSON says beside the rows: what was counted, when, and what was passed over. Its keys are
/// part of the interface, in this order.
Facts FactsOf(const ExactRun& run, const std::string& per) {
  const ActivityResult& result = run.result;
  const ActivityNotes& notes = result.notes;
  const ItemTallies& items = notes.items;
  const std::string scope = result.declarations.PathOf(run.scope);
  Facts facts{{"dump", run.origin},
              {"figures", std::string("exact")},
              {"per", per},
              // null for the whole dump, which has no path.
              {"scope", scope.empty() ? Cell() : Cell(scope)},
              {"tick_fs", result.tick ? Cell(WideCount{*result.tick}) : Cell()},
              // 64 bits without a sign, which a signed count cannot hold.
              {"begin", WideCount{result.firstTick}},
              {"end", WideCount{result.lastTick}},
              {"observed", WideCount{result.observedTicks}}};
  // Only where --clock scaled.
  if (!run.scale.clock.name.empty()) {
    facts.emplace_back("clock", run.scale.clock.name);
    facts.emplace_back("time_factor", run.scale.Factor());
  }
  // Always there, also as 0, so that a script may rely on them.
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

/// `per` is "bit", "signal", "module" or "pin".
ResultHead HeadOf(const ExactRun& run, const std::string& per) {
  ResultHead head{FactsOf(run, per), per + "s", {}};
  // Bits have figures of their own, all others sums of bits, of which they say the number.
  if (per == "bit" || per == "pin") {
    head.columns = {"path", "t0", "t1", "tx", "tz", "tc", "ig"};
  } else {
    head.columns = {"path", "bits", "toggles", "ig", "t0", "t1", "tx", "tz"};
  }
  head.columns.insert(head.columns.end(), {"freq_mhz", "toggle_rate", "high"});
  return head;
}

/// What is made of figures, row by row. Calling order: construct, one of the two Writes, once.
/// Keeps references to run, options and output.
class ExactRows {
 public:
  ExactRows(const ExactRun& run, const ExactOptions& options, ResultOutput& out)
      : run_(run),
        declarations_(run.result.declarations),
        rows_(run.result),
        filter_(options.selection.match),
        selected_(options.selection, out) {}

  /// All rows of the scope that was chosen, then the end of the selection.
  void Write(RowsPer per) {
    if (per == RowsPer::Module) {
      WriteModules();
    } else {
      // In the dump's order.
      rows_.ForEachSignal(run_.scope, [&](const SignalRow& row) {
        TakeScope(row.variable.scope);
        per == RowsPer::Bit ? WriteBits(row) : WriteSignal(row);
      });
    }
    selected_.Finish();
  }

  /// Pins in the netlist's order, whose paths are "cell/pin".
  void Write(const NetlistPins& pins) {
    std::string cell;
    pins.ForEachPin([&](const CellPin& pin) {
      // Not reached.
      if (!pin.figures) return;
      // Patterns see the cell as the scope and the pin as the name.
      cell.clear();
      pins.AppendCellPath(pin, cell);
      if (!filter_.Takes(cell, pin.name)) return;
      SetPath(cell, pin.name);
      WriteBit(*pin.figures);
    });
    selected_.Finish();
  }

 private:
  /// To be called for each row; a path that was made for the same scope stays good.
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

  /// Gives the row the path of something in a scope.
  void SetPath(const std::string& scopePath, std::string_view name) {
    std::string& path = std::get<std::string>(row_.front());
    path = scopePath;
    if (!path.empty()) path += '/';
    path += name;
  }

  /// Whether a row may still get in, before its texts are made: with --limit 10 most of a million
  /// rows stop here.
  template <class Figures>
  bool Wants(const Figures& figures) const {
    return selected_.Wants(static_cast<double>(figures.tc),
                           RatesOf(figures, run_.result).toggleRate);
  }

  /// From the highest bit down, as the dump's range says.
  void WriteBits(const SignalRow& row) {
    // A pattern that takes the bus takes all of its bits; else each is asked for.
    const bool takesAll = filter_.IsOpen() || TakesSignal(filter_, ScopePath(), row.variable);
    for (auto bit = static_cast<std::uint32_t>(row.figures.size()); bit-- > 0;) {
      // A bit that the scope has under the same name already, or one that cannot get in.
      if (row.IsRepeated(bit) || !Wants(row.figures[bit])) continue;
      name_.clear();
      row.names.AppendName(bit, name_);
      if (!takesAll && !filter_.Takes(ScopePath(), name_)) continue;
      SetPath(ScopePath(), name_);
      WriteBit(row.figures[bit]);
    }
  }

  /// The columns that HeadOf gives for bits. The row has its path.
  void WriteBit(const BitFigures& figures) {
    SetCounts({figures.t0, figures.t1, figures.tx, figures.tz, figures.tc, figures.ig});
    Add(static_cast<double>(figures.tc), RatesOf(figures, run_.result));
  }

  void SetCounts(std::initializer_list<WideCount> counts) {
    row_.resize(1 + counts.size());
    std::copy(counts.begin(), counts.end(), row_.begin() + 1);
  }

  void WriteSignal(const SignalRow& row) {
    // Declared before in the scope with the same name and code.
    if (row.IsWhollyRepeated()) return;
    // A code that has two names here is two rows; sums by module count it once.
    ActivitySums sums;
    sums.Add(row.figures);
    if (!Wants(sums)) return;
    // Patterns after figures: matching costs more than comparing.
    if (!filter_.IsOpen() && !TakesSignal(filter_, ScopePath(), row.variable)) return;
    SetPath(ScopePath(), row.variable.name);
    WriteSums(sums);
  }

  /// In the order of the dump; a module comes before those in it.
  void WriteModules() {
    const std::vector<ActivitySums> sums = rows_.ModuleSums();
    const std::vector<bool> inside = rows_.ScopesIn(run_.scope);
    // Scope 0 is no module.
    for (std::uint32_t scope = Declarations::kDump + 1; scope < sums.size(); ++scope) {
      // Scopes without bits, of reals only say, have no figures.
      if (!inside[scope] || sums[scope].bits == 0 || !Wants(sums[scope])) continue;
      // A module's row belongs to the scope around it.
      TakeScope(declarations_.scopes[scope].parent);
      const std::string& name = declarations_.scopes[scope].name;
      if (!filter_.IsOpen() && !filter_.Takes(ScopePath(), name)) continue;
      SetPath(ScopePath(), name);
      WriteSums(sums[scope]);
    }
  }

  /// The columns that HeadOf gives for signals and modules.
  void WriteSums(const ActivitySums& sums) {
    SetCounts({sums.bits, sums.tc, sums.ig, sums.t0, sums.t1, sums.tx, sums.tz});
    Add(static_cast<double>(sums.tc), RatesOf(sums, run_.result));
  }

  /// Adds the three columns that all rows end in. Scaling divides rates by the factor of times;
  /// `high` is a share of time and stays.
  void Add(double toggles, const ActivityRates& rates) {
    const double factor = run_.scale.Factor();
    const auto scaled = [factor](const std::optional<double>& rate) {
      return rate ? Cell(*rate / factor) : Cell();
    };
    row_.push_back(scaled(rates.freqMhz));
    row_.push_back(scaled(rates.toggleRate));
    row_.push_back(rates.high ? Cell(*rates.high) : Cell());
    // Sorted by rates that are not scaled, as all are scaled alike.
    const SortKeys keys{std::get<std::string>(row_.front()), toggles, rates.toggleRate};
    selected_.Add(keys, row_);
  }

  const ExactRun& run_;
  const Declarations& declarations_;
  const ActivityRows rows_;
  const PathFilter filter_;
  SelectedRows selected_;
  // Of the scope that was taken last; the path is made when it is first asked for.
  std::uint32_t scope_ = Declarations::kDump;
  bool hasScopePath_ = false;
  std::string scopePath_;
  // The row in hand and the name of a bit: their room is kept for the next ones.
  Row row_{std::string()};
  std::string name_;
};

/// A dump whose variables have no bits has a result without rows; else something was asked for that
/// is not there.
ExitStatus RowsStatus(const ExactRun& run, const ResultOutput& out, const ExactOptions& options,
                      const std::string& per) {
  // Nobody can be blamed for a dump without bits; a choice that left nothing was a mistake.
  const bool wasChosen =
      !options.scope.empty() || !options.selection.match.empty() || !options.netlist.empty();
  if (out.rows() > 0 || !wasChosen || options.selection.limit == 0) return ExitStatus::Done;
  Say(run.dump, "no " + per + " was selected");
  return ExitStatus::NothingMatched;
}

/// Variables outside every scope are rows of bits and of signals, but no module. A user who adds up
/// all modules would miss them.
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
