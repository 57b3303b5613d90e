// The figures that most commands start from: a dump's scopes and signals with their counts by the
// rule of hosts, read directly or, with --as-is, by the library's hierarchical run.
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

/// What a user tells a command about the dump and the part of its time to look at.
struct FigureOptions {
  InputOptions input;
  TimeWindow window;
};

struct Figures {
  std::string dump;  // what messages call it
  HostRun run;
  bool isAsIs = false;
  std::string origin{};  // what results call the dump, where a database of it was read

  /// The frequency of a signal with so many changes. Of a dump without a time scale or a span
  /// nothing is known, though under --as-is it is what a host gets.
  Cell Frequency(std::uint32_t changes) const;
  Cell FrequencyOf(const DumpVariable& variable) const {
    return Frequency(run.ChangesOf(variable));
  }
};

/// Reads the dump and says what a user must know about the figures. Throws Failure.
Figures ReadFigures(const FigureOptions& options);

/// The figures of a module tree that the library has read last.
Figures FiguresOfTree(const std::string& dump, const orsa::kesncd::VmodHier& root);

/// The scope of a dump's figures that a text means.
std::uint32_t ChosenScope(const Figures& figures, const std::string& text);

/// Says which module was proposed, where none was given.
void SayProposedTop(const Figures& figures, const std::string& given, std::uint32_t scope);

/// What messages call a scope.
std::string ScopeName(const Declarations& declarations, std::uint32_t scope);

/// The modules that a flat run can take, in the order of the dump.
std::vector<std::string> ModulesWithVariables(const Declarations& declarations);
/// The path of a scope as rows give it: whole, or of a very long one its end after ".../". Written
/// out in every row, the paths of a corrupt or hostile dump would be out of all proportion to it.
std::string RowPath(const Declarations& declarations, std::uint32_t scope);

/// The facts that results begin with.
Facts RunFacts(const Figures& figures, const std::string& top);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_HOST_FIGURES_FIGURES_H_
