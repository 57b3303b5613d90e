// What `kesncd activity` is told, and what it has counted by then: shared by the files that write
// one format each.
#ifndef KESNCD_CLI_EXACT_FIGURES_EXACT_OPTIONS_H_
#define KESNCD_CLI_EXACT_FIGURES_EXACT_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "activity/activity_result.h"
#include "activity/body_part.h"
#include "cli/exact_figures/clock_scale.h"
#include "cli/input/dump_input.h"
#include "cli/output/output.h"
#include "cli/selection/selection.h"
#include "free_format/prepare/prepare.h"
#include "vcd/declarations.h"

namespace orsa::kesncd::cli {

/// A module is everything in it and below; a signal is a variable with all its bits.
enum class RowsPer { Bit, Signal, Module };
/// Table, Csv and Json are rows; Saif and Tcl are for estimators; Db is an activity database.
enum class ExactFormat { Table, Csv, Json, Saif, Tcl, Db };

/// Filled in by AddExactChoices and AddEstimatorOptions, checked by CheckExactOptions; activity and
/// merge share it. Texts are empty for what was not given.
struct ExactOptions {
  // The dump and how to read it.
  InputOptions input;
  TimeWindow window;
  // --scope: only what is in it and below, by path or by a name that only one has.
  std::string scope;
  // What a row is.
  RowsPer per = RowsPer::Signal;
  // --sort, --limit and --match.
  SelectionOptions selection;
  std::optional<ExactFormat> asked;         // else the path's ending says which, else it is a table
  ExactFormat format = ExactFormat::Table;  // set before anything is read
  OutputOptions output;                     // whose format is set for rows
  std::optional<PartChoice> part;           // of the dump, instead of all of it
  ClockOptions clock;
  // --time-unit, for Tcl: the unit that toggles are counted in.
  std::optional<std::uint64_t> timeUnit;  // femtoseconds
  // --strip: paths begin below this scope.
  std::string strip;
  // --root: what SAIF's outermost instance is called.
  std::string root;
  // --unwritten: file for the names that SAIF has no place for.
  std::string unwritten;
  // --netlist: figures go to the pins of its cells.
  std::string netlist;
  // --netlist-top: its module, where the netlist does not say.
  std::string netlistTop;
  // --unmatched: file for the pins that the dump does not reach.
  std::string unmatched;
  double require = 0;  // percent of the pins

  /// Only after CheckExactOptions.
  bool HasRows() const {
    return format == ExactFormat::Table || format == ExactFormat::Csv ||
           format == ExactFormat::Json;
  }
};

/// What was counted and how it is to be written: handed to the writers of all formats.
struct ExactRun {
  std::string dump;    // what messages call it
  std::string origin;  // what results call it, which differ where a database was read
  ActivityResult result;
  // What --scope chose; all of the dump without it.
  std::uint32_t scope = Declarations::kDump;
  // 1 unless --clock was given.
  ClockScale scale;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_OPTIONS_H_
