// Options of exact activity, and what is done with them.
#include "cli/exact_figures/exact_choices.h"

#include <unistd.h>

#include <utility>

#include "cli/commands/commands.h"
#include "cli/exact_figures/exact_files.h"
#include "cli/exact_figures/exact_rows.h"
#include "cli/output/path_ending.h"
#include "cli/process/terminal.h"
#include "cli/selection/scope_choice.h"
#include "text/failure.h"
#include "text/number.h"

namespace orsa::kesncd::cli {

namespace {

// The words of --format. Db is last, which FormatOf relies on.
const std::vector<std::pair<std::string, ExactFormat>>& ExactFormats() {
  static const std::vector<std::pair<std::string, ExactFormat>> kFormats{
      {"table", ExactFormat::Table}, {"csv", ExactFormat::Csv}, {"json", ExactFormat::Json},
      {"saif", ExactFormat::Saif},   {"tcl", ExactFormat::Tcl}, {"db", ExactFormat::Db}};
  return kFormats;
}

/// The format that was asked for, or that the path ends in. Settled once, before the reading:
/// whether a path, a terminal or a packed name suits the format is told at once.
ExactFormat FormatOf(const ExactOptions& options) {
  // A database's word is "db", but its files end in ".kact".
  std::vector<std::pair<std::string, ExactFormat>> endings = ExactFormats();
  endings.back().first = "kact";
  const ExactFormat format =
      ChosenFormat(options.asked, options.output.path, endings, ExactFormat::Table);
  // What is left is about databases only.
  if (format != ExactFormat::Db) return format;
  const std::string& path = options.output.path;
  // SQLite pages are found by their place in the file, which a packed one would not have.
  if (EndingOf(path).isPacked) {
    throw Failure(FailureKind::Unusable, path + ": a database is not packed");
  }
  if ((path.empty() || path == "-") && IsTerminal(STDOUT_FILENO)) {
    throw Failure(FailureKind::Unusable, "a database is not for a terminal: -o FILE");
  }
  return format;
}

/// A database holds everything, so that it can be asked for anything.
void CheckDatabaseOptions(const ExactOptions& options) {
  if (options.format != ExactFormat::Db) return;
  const bool hasChoice = !options.scope.empty() || !options.selection.match.empty() ||
                         !options.netlist.empty() || !options.clock.clock.empty() ||
                         !options.clock.sdc.empty();
  if (!hasChoice) return;
  throw Failure(
      FailureKind::Unusable,
      "a database holds all of a dump: --scope, --match, --netlist, --clock and --sdc are "
      "for what is made from it");
}

/// What goes with some formats only is refused with others rather than overlooked. An option that
/// is overlooked in silence gives a file that the user takes for another.
void CheckTogether(const ExactOptions& options) {
  // Throws for a combination that is wrong.
  const auto refuse = [](bool isWrong, const std::string& why) {
    if (isWrong) throw Failure(FailureKind::Unusable, why);
  };
  const bool isSaif = options.format == ExactFormat::Saif;
  const bool hasNetlist = !options.netlist.empty();
  refuse((!options.root.empty() || !options.unwritten.empty()) && !isSaif,
         "--root and --unwritten are for --format saif");
  refuse(!options.strip.empty() && options.HasRows() && !hasNetlist,
         "--strip is for --format saif and tcl, and for --netlist");
  // Only a Tcl file counts toggles in a unit of time.
  refuse(options.timeUnit.has_value() && options.format != ExactFormat::Tcl,
         "--time-unit is for --format tcl");
  refuse(options.timeUnit == 0, "--time-unit: 0 is no unit");
  // SAIF and Tcl have an order of their own and are never cut.
  refuse(!options.HasRows() &&
             (options.selection.sort != SortBy::Nothing || options.selection.limit != UINT64_MAX),
         "--sort and --limit are for rows: --format table, csv, json");
  // Pins in files belong to a netlist's cells, all of them: a part of them would be an estimate of
  // a part.
  refuse(!options.HasRows() && hasNetlist && !options.selection.match.empty(),
         "--match and --netlist go together in rows only");
  refuse(!hasNetlist &&
             (!options.netlistTop.empty() || !options.unmatched.empty() || options.require > 0),
         "--netlist-top, --unmatched and --require are for --netlist");
  refuse(options.require > 100,
         "--require: " + RoundedText(options.require, 17) + " is more than 100 percent");
  CheckDatabaseOptions(options);
}

/// For formats without rows this is never looked at.
Format RowFormatOf(ExactFormat format) {
  if (format == ExactFormat::Csv) return Format::Csv;
  return format == ExactFormat::Json ? Format::Json : Format::Table;
}

}  // namespace

void AddExactChoices(Command& command, ExactOptions& options) {
  command.AddChoice(
      "--per", {{"bit", RowsPer::Bit}, {"signal", RowsPer::Signal}, {"module", RowsPer::Module}},
      options.per, "what a row is; a module is all that is in it and below");
  command.AddText("--scope", "PATH", options.scope,
                  "only this scope and all below it: its path from the top, or a name that only "
                  "one has");
  AddSelectionOptions(command, options.selection);
  command
      .AddChoice("--format", {ExactFormats().begin(), ExactFormats().end()}, options.asked,
                 "how the activity is written; db is a database that commands take for the dump")
      .Initially("what FILE ends in, else table");
  AddLookOptions(command, options.output);
}

/// Those of SAIF and Tcl first, then those of netlists.
void AddEstimatorOptions(Command& command, ExactOptions& options) {
  command.AddText("--strip", "PATH", options.strip,
                  "the scope that is the design: the way to it is left out of SAIF and Tcl");
  command.AddText("--root", "NAME", options.root, "what the outermost instance of SAIF is called");
  command.AddFile("--unwritten", "FILE", options.unwritten,
                  "list the names that no reader of SAIF takes");
  command.AddTime("--time-unit", options.timeUnit,
                  "Tcl: toggles are counted in this time, 1ns if there is no --clock");
  command.AddFile("--netlist", "FILE", options.netlist,
                  "write the pins of this netlist's cells: JSON of Yosys, or Verilog");
  command.AddText("--netlist-top", "NAME", options.netlistTop,
                  "the design's module, where the netlist does not say");
  command.AddFile("--unmatched", "FILE", options.unmatched,
                  "list the pins that the dump does not reach");
  command.AddNumber("--require", "PERCENT", 0, options.require,
                    "exit status 1 where fewer of the pins are reached");
}

void CheckExactOptions(ExactOptions& options) {
  // In this order: the checks go by the format.
  options.format = FormatOf(options);
  options.output.format = RowFormatOf(options.format);
  CheckTogether(options);
}

void CheckExactPlaces(std::vector<std::string> inputs, const ExactOptions& options) {
  std::vector<std::string> outputs{options.output.path};
  // The lists of what is missing are outputs as well.
  for (const std::string& path : {options.unwritten, options.unmatched}) {
    if (!path.empty()) outputs.push_back(path);
  }
  inputs.push_back(options.netlist);
  CheckOutputs(inputs, outputs);
}

/// Pins go before formats: with a netlist every format has pins in it.
ExitStatus WriteExact(ExactRun run, const ExactOptions& options) {
  // A scope that is not there fails here: which ones there are is known only after the reading.
  if (!options.scope.empty()) {
    run.scope = OnlyScope(run.dump, run.result.declarations, options.scope);
  }
  if (!options.netlist.empty()) return WritePins(run, options);
  return options.HasRows() ? WriteExactRows(run, options) : WriteExactFile(run, options);
}

}  // namespace orsa::kesncd::cli
