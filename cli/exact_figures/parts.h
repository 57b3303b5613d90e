// Parts of a dump that jobs on several machines count, and their sum.
#ifndef KESNCD_CLI_EXACT_FIGURES_PARTS_H_
#define KESNCD_CLI_EXACT_FIGURES_PARTS_H_

#include <string>
#include <vector>

#include "activity/body_part.h"
#include "cli/input/dump_input.h"
#include "database/stored_run.h"

namespace orsa::kesncd::cli {

/// Counts one part of a dump. Throws Failure.
StoredRun ReadPart(const InputOptions& input, const PartChoice& choice);

/// Whether a file holds a part; not what cannot be read as one.
bool IsPart(const std::string& path);

/// Adds all parts of a dump up to what one reading of it gives. Stretches that no part could read
/// on its own are read from `dump`, or from where the parts were counted if it is empty. Throws
/// Failure with Unusable, which names it, for a part that is missing, there twice or another
/// dump's.
StoredRun AddParts(const std::vector<std::string>& paths, const std::string& dump);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_EXACT_FIGURES_PARTS_H_
