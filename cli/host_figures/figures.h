// The figures that most commands start from: a dump's scopes and signals with their counts by the
// rule of hosts, read directly or, with --as-is, by the library's hierarchical run.
//
// The counting rule of hosts, which every figure here follows: a scalar that becomes 0 or 1 and
// every value of a vector count, a bus is one signal, the first change is the initial value, and c
// changes are (c - 1) / 2 cycles. Exact figures, bit by bit, are in cli/exact_figures.
#ifndef KESNCD_CLI_HOST_FIGURES_FIGURES_H_
#define KESNCD_CLI_HOST_FIGURES_FIGURES_H_

#include <cstdint>
#include <string>
#include <vector>

#include "activity/host_run.h"
#include "cli/input/dump_input.h"
#include "cli/selection/scope_choice.h"
#include "export/result_writer.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

/// What a user tells a command about the dump and the part of its time to look at. Filled in by
/// AddFigureOptions and checked by CheckFigureOptions: a window and `asIs` exclude each other.
struct FigureOptions {
  InputOptions input;
  TimeWindow window;
};

/// A value; nothing in it refers to the dump, which is closed by then.
struct Figures {
  std::string dump;  // what messages call it; see NameOf
  // Declarations, changes by identifier code and the span.
  HostRun run;
  // Read by the library's hierarchical run: unknown figures are a host's then, such as 0 or a
  // negative frequency.
  bool isAsIs = false;
  std::string origin{};  // what results call the dump, where a database of it was read

  /// The frequency of a signal with so many changes. Of a dump without a time scale or a span
  /// nothing is known, though under --as-is it is what a host gets. In MHz. `changes` counts the
  /// initial value, so fewer than two give 0.
  Cell Frequency(std::uint32_t changes) const;
  Cell FrequencyOf(const DumpVariable& variable) const {
    return Frequency(run.ChangesOf(variable));
  }
};

/// Reads the dump and says what a user must know about the figures. Throws Failure. The input may
/// be a dump or an activity database of one. Remarks go to standard error as the reading finds
/// them.
Figures ReadFigures(const FigureOptions& options);

/// The figures of a module tree that the library has read last. Copies all that is needed, so the
/// tree may go afterwards; the time scale and the span are those that the library's exported
/// variables hold.
Figures FiguresOfTree(const std::string& dump, const orsa::kesncd::VmodHier& root);

/// The scope of a dump's figures that a text means. See ChosenScope of
/// cli/selection/scope_choice.h, which this calls.
std::uint32_t ChosenScope(const Figures& figures, const std::string& text);

/// Says which module was proposed where none was given: a user must know which one the figures are
/// of.
void SayProposedTop(const Figures& figures, const std::string& given, std::uint32_t scope);

/// What messages call a scope. The variables outside every scope have a name too, which no scope
/// can have.
std::string ScopeName(const Declarations& declarations, std::uint32_t scope);

/// The modules that a flat run can take, in the order of the dump. Paths from the top, of scopes of
/// kind "module" that declare variables themselves.
std::vector<std::string> ModulesWithVariables(const Declarations& declarations);
/// The path of a scope as rows give it: whole, or of a very long one its end after ".../". Written
/// out in every row, the paths of a corrupt or hostile dump would be out of all proportion to it.
std::string RowPath(const Declarations& declarations, std::uint32_t scope);

/// What JSON results carry beside their rows: dump, top, timescale_ns, start_tick, end_tick and
/// figures, which is "host".
Facts RunFacts(const Figures& figures, const std::string& top);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_FIGURES_H_
