// An activity database given in place of a dump: it holds what was counted, so nothing has to be
// read again.
//
// Every command that needs counts only takes either. One that needs values by time (profile, check,
// prepare, activity --clock) opens the dump itself, and OpenDump tells a user who gives it a
// database what is wrong.
#ifndef KESNCD_CLI_INPUT_DATABASE_INPUT_H_
#define KESNCD_CLI_INPUT_DATABASE_INPUT_H_

#include <memory>

#include "cli/input/dump_input.h"
#include "database/database_reader.h"
#include "free_format/prepare/prepare.h"

namespace orsa::kesncd::cli {

/// The database that the input is; null where it is none. Throws Failure with Unusable where it is
/// one that cannot be read, or that holds another window than the one that is asked for. Messages
/// call it by NameOf. An empty window asks for whatever the database holds.
std::unique_ptr<ActivityDatabase> OpenDatabase(const InputOptions& options,
                                               const TimeWindow& window);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_INPUT_DATABASE_INPUT_H_
