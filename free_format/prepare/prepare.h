// Rewrites a dump into the shape that every reader understands.
//
// The body streams through: memory is in proportion to the declarations. Signals keep their
// changes, scope by scope and name by name, and the dump its time span; where that cannot be, the
// report says so.
#ifndef KESNCD_FREE_FORMAT_PREPARE_PREPARE_H_
#define KESNCD_FREE_FORMAT_PREPARE_PREPARE_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "free_format/body_window.h"
#include "free_format/dump_items.h"
#include "free_format/dump_words.h"
#include "text/byte_stream.h"
#include "vcd/declarations.h"

namespace orsa::kesncd {

/// The bounds of a window in femtoseconds, both of them in it. As a user gives them, independent of
/// a dump's time scale.
struct TimeWindow {
  std::optional<std::uint64_t> begin;
  std::optional<std::uint64_t> end;
};

/// The window in ticks: BEGIN is rounded up, END down, so that no tick outside the window is kept.
/// Throws Failure with Unusable where a dump without a tick is to have a window; messages call it
/// `name`.
TickWindow WindowInTicks(const TimeWindow& window, std::optional<std::uint64_t> tick,
                         const std::string& name);

/// What a user wants of the rewrite; without any of it all of the dump is kept in its order.
struct PrepareOptions {
  std::string dump;  // what messages call it: a path, as a rule
  // Says which scope goes first; without it they stay in their order.
  std::function<std::uint32_t(const Declarations&)> chooseTop;
  std::optional<std::uint64_t> tick;      // femtoseconds, for a dump without a time scale
  TimeWindow window;                      // to keep
  std::size_t block = DumpWords::kBlock;  // bytes that are read and written at a time
};

/// All figures are of what was written.
struct PrepareReport {
  std::optional<std::uint64_t> tick;  // femtoseconds
  std::string timescale;              // as the dump has it
  bool tickNotNeeded = false;         // a time scale was supplied, but the dump has one
  std::uint64_t changes = 0;          // those that were written, before they were written by name
  std::uint64_t unknown = 0;          // scalars among them that became x or z
  std::uint64_t stamps = 0;           // written ones
  // In the dump's ticks: the span of the prepared dump.
  std::uint64_t firstTick = 0;
  std::uint64_t lastTick = 0;
  bool isEndCut = false;  // the window ends after the dump does
  // Names that were missing.
  Tally unnamed;
  Tally renamed;                    // names that no reader could take
  Tally leftOut;                    // further names of a signal, beyond what is written for one
  Tally cut;                        // values that were cut to what fits on a line of every reader
  std::string addedRoot;            // around several top-level scopes
  std::vector<std::string> unread;  // what could not be read, in words
  Tally weak;                       // changes to H or L

  /// What a user of the figures must know, most important first: what is missing, and what the
  /// prepared dump says otherwise than the dump.
  std::vector<std::string> Remarks() const;
};

/// Throws Failure with Unusable for what is no VCD file or declares no variable, with
/// NothingMatched where the window holds nothing. Writes to `out` while it reads; on a Failure what
/// was written is worth nothing.
PrepareReport PrepareDump(ByteSource& in, ByteSink& out, const PrepareOptions& options);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_PREPARE_PREPARE_H_
