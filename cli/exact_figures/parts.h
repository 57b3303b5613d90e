// Parts of a dump that jobs on several machines count, and their sum.
//
// On a cluster, job K of N runs `kesncd activity dump.vcd --part K/N -o K.kact`, then one more runs
// `kesncd merge *.kact`. Every job finds the same cuts by itself, so jobs need no common plan; the
// sum is to the last tick what one reading gives.
#ifndef KESNCD_CLI_EXACT_FIGURES_PARTS_H_
#define KESNCD_CLI_EXACT_FIGURES_PARTS_H_

#include <optional>
#include <string>
#include <vector>

#include "activity/body_part.h"
#include "cli/exact_figures/kept_profile.h"
#include "cli/input/dump_input.h"
#include "database/stored_run.h"

namespace orsa::kesncd::cli {

/// Counts one part of a dump. Throws Failure. Reads the declarations and the part's stretch, so of
/// N jobs each reads about 1/N of the file. The result is complete but for figures, which only the
/// whole has: `part` holds what adding up needs, with toggles over time by `windows` where these
/// are asked for.
StoredRun ReadPart(const InputOptions& input, const PartChoice& choice,
                   const std::optional<WindowsAsked>& windows);

/// Of a file that holds a part, where its dump was when it was counted. Nothing for a dump and for
/// a database of a whole one. Throws for a database that cannot be read.
std::optional<std::string> DumpOfPart(const std::string& path);

/// Adds all parts of a dump up to what one reading of it gives. Stretches that no part could read
/// on its own are read from `dump`, or from where the parts were counted if it is empty. Throws
/// Failure with Unusable, which names it, for a part that is missing, there twice or another
/// dump's. `paths` in any order. Memory is that of a few parts, however many there are. The sum has
/// both kinds of figures and its remarks are said.
StoredRun AddParts(const std::vector<std::string>& paths, const std::string& dump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PARTS_H_
