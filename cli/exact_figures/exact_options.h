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

enum class RowsPer { Bit, Signal, Module };
enum class ExactFormat { Table, Csv, Json, Saif, Tcl, Db };

struct ExactOptions {
  InputOptions input;
  TimeWindow window;
  std::string scope;
  RowsPer per = RowsPer::Signal;
  SelectionOptions selection;
  std::optional<ExactFormat> asked;         // else the path's ending says which, else it is a table
  ExactFormat format = ExactFormat::Table;  // set before anything is read
  OutputOptions output;                     // whose format is set for rows
  std::optional<PartChoice> part;           // of the dump, instead of all of it
  ClockOptions clock;
  std::optional<std::uint64_t> timeUnit;  // femtoseconds
  std::string strip;
  std::string root;
  std::string unwritten;
  std::string netlist;
  std::string netlistTop;
  std::string unmatched;
  double require = 0;  // percent of the pins

  bool HasRows() const {
    return format == ExactFormat::Table || format == ExactFormat::Csv ||
           format == ExactFormat::Json;
  }
};

struct ExactRun {
  std::string dump;    // what messages call it
  std::string origin;  // what results call it, which differ where a database was read
  ActivityResult result;
  std::uint32_t scope = Declarations::kDump;
  ClockScale scale;
};

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_EXACT_OPTIONS_H_
