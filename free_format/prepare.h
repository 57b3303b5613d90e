// Rewrites a dump into the shape that every reader understands.
//
// The body streams through: memory is in proportion to the declarations. Signals keep their
// changes, scope by scope and name by name, and the dump its time span; where that cannot be, the
// report says so.
#ifndef KESNCD_FREE_FORMAT_PREPARE_H_
#define KESNCD_FREE_FORMAT_PREPARE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "free_format/dump_items.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

struct PrepareOptions {
  std::string dump;                    // what messages call it
  std::string top;                     // the scope that goes first, a name or a path; may be empty
  std::optional<std::uint64_t> tick;   // femtoseconds, for a dump without a time scale
  std::optional<std::uint64_t> begin;  // of the window to keep, in femtoseconds
  std::optional<std::uint64_t> end;
};

struct PrepareReport {
  std::optional<std::uint64_t> tick;  // femtoseconds
  std::string timescale;              // as the dump has it
  bool tickNotNeeded = false;         // a time scale was supplied, but the dump has one
  std::uint64_t changes = 0;          // those that were written, before they were written by name
  std::uint64_t unknown = 0;          // scalars among them that became x or z
  std::uint64_t stamps = 0;           // written ones
  std::uint64_t firstTick = 0;
  std::uint64_t lastTick = 0;
  std::uint64_t backward = 0;  // stamps earlier than the one before
  bool isTorn = false;         // the dump ends before its declarations do
  Tally malformed;
  Tally unbalanced;
  Tally renamed;
  std::string addedRoot;  // around several top-level scopes
  ItemTallies items;

  /// What a user of the figures must know, most important first: what is missing, and what the
  /// prepared dump says otherwise than the dump.
  std::vector<std::string> Remarks() const;
};

/// Throws Failure with Unusable for what is no VCD file or declares no variable, with
/// NothingMatched where the top scope does not exist or the window holds nothing.
PrepareReport PrepareDump(ByteSource& in, ByteSink& out, const PrepareOptions& options);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_PREPARE_H_
