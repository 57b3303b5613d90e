// SAIF and Tcl files, their lists of what is missing in them, and the pins of netlists.
#include "cli/exact_figures/exact_files.h"

#include <optional>
#include <vector>

#include "activity/activity_rows.h"
#include "cli/exact_figures/exact_rows.h"
#include "cli/input/netlist_input.h"
#include "cli/output/sink_stream.h"
#include "cli/process/messages.h"
#include "cli/selection/scope_choice.h"
#include "database/database_writer.h"
#include "export/netlist_pins.h"
#include "export/saif_writer.h"
#include "export/tcl_writer.h"
#include "text/failure.h"
#include "text/number.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

/// A file that is written as a stream, or none where no path is given. The result appears with
/// Commit. Two of them may be open at a time: the file and its list.
class StreamFile {
 public:
  explicit StreamFile(const std::string& path) : file_(path), stream_(file_) {}

  std::ostream& stream() { return stream_; }
  void Commit() {
    // What the stream still holds goes into the file first.
    stream_.Finish();
    file_.Commit();
  }

 private:
  OutputFile file_;
  SinkStream stream_;  // writes into file_, so it is made after it and destroyed before
};

/// In place, since a StreamFile cannot be moved: its parts refer to one another.
void MakeWhereAsked(const std::string& path, std::optional<StreamFile>& file) {
  if (!path.empty()) file.emplace(path);
}

/// The scope that paths begin in. What --strip names need not be what --scope does. "--strip
/// tb/soc" with "--scope tb/soc/cpu" gives paths from below soc, of the cpu only.
std::uint32_t StartOf(const ExactRun& run, const ExactOptions& options) {
  if (options.strip.empty()) return run.scope;
  return OnlyScope(run.dump, run.result.declarations, options.strip);
}

/// By variable, whether it is in the scope that was chosen and matches; empty for all of `start`.
/// As SaifOptions::kept and TclOptions::kept take it.
std::vector<bool> KeptVariables(const ExactRun& run, const ExactOptions& options,
                                std::uint32_t start) {
  const PathFilter filter(options.selection.match);
  // The usual case, which needs no walk.
  if (start == run.scope && filter.IsOpen()) return {};
  const Declarations& declarations = run.result.declarations;
  const std::vector<bool> inside = ActivityRows(run.result).ScopesIn(run.scope);
  std::vector<bool> kept;
  // Variables of a scope mostly come together, so a path is made once for all of them.
  std::uint32_t last = Declarations::kDump;
  std::string path;
  for (const DumpVariable& variable : declarations.variables) {
    if (variable.scope != last) path = declarations.PathOf(variable.scope);
    last = variable.scope;
    kept.push_back(inside[variable.scope] && TakesSignal(filter, path, variable));
  }
  return kept;
}

/// What both kinds of SAIF (nets and pins) have in common.
SaifOptions SaifOptionsOf(const ExactRun& run, const ExactOptions& options) {
  SaifOptions saif;
  saif.version = KESNCD_VERSION;
  saif.root = options.root;
  saif.scaleNumerator = run.scale.numerator;
  saif.scaleDenominator = run.scale.denominator;
  return saif;
}

/// The unit that Tcl counts toggles in: --time-unit if it is given, else the clock's period, else
/// what TclRates begins with (1 ns).
TclRates RatesOf(const ExactRun& run, const ExactOptions& options) {
  TclRates rates;
  rates.version = KESNCD_VERSION;
  rates.scaleNumerator = run.scale.numerator;
  rates.scaleDenominator = run.scale.denominator;
  if (!run.scale.clock.name.empty() && !options.timeUnit) {
    rates.clock = run.scale.clock.name;
    rates.period = run.scale.clock.period;
    rates.periodText = run.scale.clock.periodText;
  } else if (options.timeUnit) {
    rates.period = *options.timeUnit;
    rates.periodText = TimeText(rates.period);
  }
  return rates;
}

/// Top-level scopes that had to be joined, and nets that had to be left out: both change what an
/// estimator finds.
void SayOfSaif(const ExactRun& run, const ExactOptions& options, const SaifReport& report) {
  if (!report.joined.empty()) {
    Remark(run.dump, "its top-level scopes " + ShortList(report.joined) +
                         // As in "kesncd activity x.vcd --format saif" where a package is
                         // beside the test bench.
                         " are put into one instance, " + report.root + "; --scope takes one");
  }
  // Only where something is left out, and was not listed.
  const std::string hint =
      report.unwritten == 0 || !options.unwritten.empty() ? "" : "; --unwritten FILE lists them";
  Remark(run.dump, std::to_string(report.nets) + " nets written; " +
                       std::to_string(report.unwritten) +
                       " left out, whose names no reader of SAIF takes" + hint);
}

/// `pins` null: the nets of the dump; else the pins of a netlist's cells.
void WriteSaifFile(const ExactRun& run, const ExactOptions& options, const NetlistPins* pins) {
  SaifOptions saif = SaifOptionsOf(run, options);
  // Both are opened before anything is written, so that the second cannot fail after the first is
  // complete.
  StreamFile file(options.output.path);
  std::optional<StreamFile> unwritten;
  MakeWhereAsked(options.unwritten, unwritten);
  std::ostream* const list = unwritten ? &unwritten->stream() : nullptr;
  SaifReport report;
  if (pins != nullptr) {
    report = WritePinSaif(*pins, run.result, saif, file.stream(), list);
  } else {
    saif.scope = StartOf(run, options);
    saif.stripsWay = !options.strip.empty();
    saif.kept = KeptVariables(run, options, saif.scope);
    report = WriteSaif(run.result, saif, file.stream(), list);
  }
  // Both or neither, as far as two files can be.
  file.Commit();
  if (unwritten) unwritten->Commit();
  SayOfSaif(run, options, report);
}

/// As WriteSaifFile; Tcl takes any name, so nothing is left out.
void WriteTclFile(const ExactRun& run, const ExactOptions& options, const NetlistPins* pins) {
  StreamFile file(options.output.path);
  if (pins != nullptr) {
    WritePinTcl(*pins, run.result, RatesOf(run, options), file.stream());
  } else {
    TclOptions tcl;
    tcl.rates = RatesOf(run, options);
    tcl.scope = StartOf(run, options);
    tcl.stripsWay = !options.strip.empty();
    tcl.kept = KeptVariables(run, options, tcl.scope);
    WriteTcl(run.result, tcl, file.stream());
  }
  file.Commit();
}

/// Says which share of the pins has figures, and lists the others where asked for. NothingMatched
/// where --require asks for more: a netlist that does not belong to the dump must not pass a
/// regression.
ExitStatus ReportPins(const ExactRun& run, const ExactOptions& options, const NetlistPins& pins) {
  const double percent = pins.ReachedPercent();
  // Also where all pins are reached: an empty list is an answer.
  if (!options.unmatched.empty()) {
    // "fifo/_07_/A", a line each.
    StreamFile file(options.unmatched);
    WriteUnreached(pins, file.stream());
    file.Commit();
  }
  const bool wantsHint = pins.reached() < pins.pins() && options.unmatched.empty();
  Remark(run.dump, std::to_string(pins.reached()) + " of " + std::to_string(pins.pins()) +
                       " pins of " + pins.top() + " reached, " + RoundedText(percent, 4) + " %" +
                       (wantsHint ? "; --unmatched FILE lists the others" : ""));
  // 0 without --require.
  if (percent >= options.require) return ExitStatus::Done;
  // As many digits as it takes to tell the two apart.
  int digits = 4;
  while (digits < 17 && RoundedText(percent, digits) == RoundedText(options.require, digits)) {
    ++digits;
  }
  Say(run.dump, RoundedText(percent, digits) + " % of the pins reached are less than the " +
                    RoundedText(options.require, digits) + " % that --require asks for");
  return ExitStatus::NothingMatched;
}

}  // namespace

ExitStatus WriteExactFile(const ExactRun& run, const ExactOptions& options) {
  if (options.format == ExactFormat::Saif) {
    WriteSaifFile(run, options, nullptr);
  } else {
    WriteTclFile(run, options, nullptr);
  }
  return ExitStatus::Done;
}

/// A run that is counted, a merged one or a part: all have the same form.
void WriteDatabaseFile(const StoredRun& run, const std::string& path) {
  OutputFile file(path);
  WriteDatabase(run, file);
  file.Commit();
}

/// The netlist before anything is written; it may take yosys a while.
ExitStatus WritePins(const ExactRun& run, const ExactOptions& options) {
  const Netlist netlist = ReadNetlistOf(options.netlist);
  PinOptions pinOptions;
  pinOptions.top = options.netlistTop;
  // Without either the netlist's own search for its top in the dump decides.
  if (!options.scope.empty() || !options.strip.empty()) pinOptions.scope = StartOf(run, options);
  const NetlistPins pins(netlist, run.result, pinOptions);
  if (pins.pins() == 0) {
    // A module without cells, or whose cells have no pins that are connected.
    throw Failure(FailureKind::NothingMatched,
                  options.netlist + ": " + pins.top() + " has no pin of a cell");
  }
  if (options.format == ExactFormat::Saif) {
    WriteSaifFile(run, options, &pins);
  } else if (options.format == ExactFormat::Tcl) {
    WriteTclFile(run, options, &pins);
  } else if (const ExitStatus status = WritePinRows(run, pins, options);
             status != ExitStatus::Done) {
    // Rows of which none was selected: nothing to report on.
    return status;
  }
  return ReportPins(run, options, pins);
}

}  // namespace orsa::kesncd::cli
