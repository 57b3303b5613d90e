// Which variables of runs are the same, and their sums.
//
// Variables are matched by scope and name. Where runs give a name other ranges, its bits are
// matched one by one. Two names of a code share one in the sum too, as long as they do in every
// run.
#include "activity/run_merger.h"

#include <algorithm>
#include <array>
#include <deque>
#include <numeric>
#include <string_view>

#include "activity/activity_tallies.h"
#include "activity/bit_edge.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

/// 64 bits of the finest tick: of femtoseconds five hours.
[[noreturn]] void FailTooLong() {
  throw Failure(FailureKind::Unusable, "the runs are too long to be summed in ticks of the finest");
}

/// Throws where it does not fit.
std::uint64_t Product(std::uint64_t a, std::uint64_t b) {
  std::uint64_t product = 0;
  if (__builtin_mul_overflow(a, b, &product)) FailTooLong();
  return product;
}

/// The same for sums.
void AddTo(std::uint64_t& sum, std::uint64_t added) {
  if (__builtin_add_overflow(sum, added, &sum)) FailTooLong();
}

/// Counts times in ticks that are so many times finer. No time of a bit is longer than the span.
/// Only times change; toggles and excursions are counts.
void Refine(ActivityResult& result, std::uint64_t factor) {
  // The usual case: all runs have one tick.
  if (factor == 1) return;
  result.firstTick = Product(result.firstTick, factor);
  result.lastTick = Product(result.lastTick, factor);
  result.observedTicks = Product(result.observedTicks, factor);
  for (BitFigures& bit : result.bits) {
    // Not beyond the observed time, which was checked above.
    for (std::uint64_t* time : {&bit.t0, &bit.t1, &bit.tx, &bit.tz}) *time *= factor;
  }
}

/// Equal for variables that may be the same: "7/data" for data[7:0] and data[3] of scope 7.
std::string VariableKey(const DumpVariable& variable) {
  std::string key = std::to_string(variable.scope) + "/";
  return key.append(BitNames(variable).Base());
}

/// A bit of a variable as a variable of its own, such as data[3] of data[7:0].
DumpVariable BitAlone(const DumpVariable& variable, std::uint32_t bit) {
  const BitNames names(variable);
  DumpVariable alone = variable;
  alone.name.clear();
  names.AppendName(bit, alone.name);
  // Where the brackets begin, as DumpVariable wants it.
  alone.nameWord = static_cast<std::uint32_t>(names.Base().size());
  alone.width = 1;
  return alone;
}

// A variable's place in the sum so far and in the run that is added.
using SourcePair = std::array<std::uint32_t, 4>;
struct SourcePairHash {
  // Small numbers in a row, which have to be spread over the table.
  std::size_t operator()(const SourcePair& pair) const {
    std::uint64_t mixed = 0;
    for (const std::uint32_t part : pair) {
      mixed = (mixed ^ part) * 0x9E3779B97F4A7C15U;
      mixed ^= mixed >> 32;
    }
    return mixed;
  }
};

}  // namespace

/// Ticks first: all figures below are in the common one.
void RunMerger::Add(ActivityResult run, const std::string& name) {
  AlignTicks(run);
  const std::vector<std::uint32_t> scopes = AddScopes(run.declarations);
  // The rows refer to the run, which AddFigures still needs afterwards.
  {
    const ActivityRows rows(run);
    std::vector<Slot> added = SlotsOf(rows, run.declarations, scopes);
    if (!MatchInOrder(added)) MatchByName(added);
    KeepBusiest(rows, scopes);
  }
  AddFigures(run);
  AddFacts(run);
  runs_.push_back(name);
}

/// Brings the run and the sum to the greatest common divisor of their ticks.
void RunMerger::AlignTicks(ActivityResult& run) {
  // The first run says what the tick is, or that there is none.
  if (runs_.empty()) {
    sum_.tick = run.tick;
    return;
  }
  if (sum_.tick.has_value() != run.tick.has_value()) {
    throw Failure(FailureKind::Unusable,
                  "only some of the runs have a time scale: their times cannot be summed");
  }
  // Runs without ticks are summed as they count.
  if (!run.tick) return;
  const std::uint64_t finest = std::gcd(*sum_.tick, *run.tick);
  Refine(run, *run.tick / finest);
  ScaleSum(*sum_.tick / finest);
  sum_.tick = finest;
}

/// A rate per tick falls as ticks get finer.
void RunMerger::ScaleSum(std::uint64_t factor) {
  Refine(sum_, factor);
  for (BusiestRun& busiest : busiest_) busiest.togglesPerTick /= static_cast<double>(factor);
}

/// Everything but figures: times add up, notes add up, dates and versions are the first run's.
void RunMerger::AddFacts(const ActivityResult& run) {
  Declarations& declarations = sum_.declarations;
  if (runs_.empty()) {
    declarations.date = run.declarations.date;
    declarations.version = run.declarations.version;
    // `and` over all runs, below.
    declarations.ended = true;
    // `or` over all runs.
    sum_.notes.hasStamps = false;
  }
  // One run that was cut off makes the sum one of cut dumps.
  declarations.ended = declarations.ended && (run.declarations.ended || run.declarations.hasWord);
  // The sum begins at 0 and is as long as all runs together.
  AddTo(sum_.lastTick, run.lastTick - run.firstTick);
  AddTo(sum_.observedTicks, run.observedTicks);
  sum_.notes.hasStamps = sum_.notes.hasStamps || run.notes.hasStamps;
  sum_.notes.backwardStamps += run.notes.backwardStamps;
  sum_.notes.pauses += run.notes.pauses;
  // The same list for both; its names say which belongs to which.
  std::map<std::string_view, const Tally*> tallies;
  ForEachTally(run, [&](const char* tally, const Tally& of) { tallies[tally] = &of; });
  ForEachTally(sum_, [&](const char* tally, Tally& sum) {
    const Tally& added = *tallies[tally];
    // The first line that a tally names is of the first run that has one.
    if (!sum) {
      sum = added;
    } else {
      sum.count += added.count;
    }
  });
}

/// The sum's number of each scope of a run. By scope of the run. Scopes are added as they come, so
/// parents before what is in them.
std::vector<std::uint32_t> RunMerger::AddScopes(const Declarations& declarations) {
  std::vector<DumpScope>& own = sum_.declarations.scopes;
  // Scope 0 of an empty sum.
  if (own.empty()) own.emplace_back();
  std::vector<std::uint32_t> scopes{Declarations::kDump};
  for (std::uint32_t id = 1; id < declarations.scopes.size(); ++id) {
    const DumpScope& scope = declarations.scopes[id];
    const std::uint32_t parent = scopes[scope.parent];
    const auto number = static_cast<std::uint32_t>(own.size());
    const auto [place, isNew] =
        // A scope may be new while its parent is known, never the other way round.
        scopeByPath_.try_emplace(std::to_string(parent) + "/" + scope.name, number);
    scopes.push_back(place->second);
    if (!isNew) continue;
    own[parent].scopes.push_back(number);
    own.emplace_back();
    own.back().name = scope.name;
    // The kind is that of the run that had it first.
    own.back().kind = scope.kind;
    own.back().parent = parent;
  }
  // New scopes have no busiest run yet.
  busiest_.resize(own.size());
  return scopes;
}

/// The run's variables as slots, in the dump's order, with scope and type as the sum numbers them.
std::vector<RunMerger::Slot> RunMerger::SlotsOf(const ActivityRows& rows,
                                                const Declarations& declarations,
                                                const std::vector<std::uint32_t>& scopes) {
  std::vector<Slot> slots;
  rows.ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
    // A second declaration of the same bits.
    if (row.IsWhollyRepeated()) return;
    // `since` is this run, should the slot be new.
    Slot slot{row.variable, static_cast<std::uint32_t>(runs_.size()), {}, {}, {}};
    slot.variable.scope = scopes[row.variable.scope];
    // A type that no run had before.
    const auto [type, isNew] =
        typeIds_.try_emplace(declarations.TypeOf(row.variable),
                             static_cast<std::uint32_t>(sum_.declarations.types.size()));
    if (isNew) sum_.declarations.types.push_back(type->first);
    slot.variable.typeId = type->second;
    // The run's code is good until AddFigures.
    slot.added = {row.variable.codeId, 0};
    slots.push_back(std::move(slot));
  });
  return slots;
}

/// Whether the run has the sum's variables in the same order, as most runs of a regression have.
bool RunMerger::MatchInOrder(std::vector<Slot>& added) {
  // Names with their ranges, widths and scopes; types do not matter.
  const bool isSame = std::equal(
      slots_.begin(), slots_.end(), added.begin(), added.end(), [](const Slot& a, const Slot& b) {
        return a.variable.scope == b.variable.scope && a.variable.width == b.variable.width &&
               a.variable.name == b.variable.name;
      });
  if (!isSame) return false;
  for (std::size_t i = 0; i < slots_.size(); ++i) slots_[i].added = added[i].added;
  return true;
}

/// For runs that differ: groups by scope and base name, then MatchGroup for each.
void RunMerger::MatchByName(std::vector<Slot>& added) {
  std::unordered_map<std::string, Groups> groups;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    groups[VariableKey(slots_[i].variable)].own.push_back(i);
  }
  std::vector<Groups*> order;  // of the run, so that the sum's order does not depend on a hash
  for (std::size_t i = 0; i < added.size(); ++i) {
    Groups& group = groups[VariableKey(added[i].variable)];
    if (group.others.empty()) order.push_back(&group);
    group.others.push_back(i);
  }
  for (const Groups* group : order) MatchGroup(added, *group);
  ReplaceSplit();
  // Slots of the sum that found no partner.
  for (Slot& slot : slots_) {
    if (slot.added.codeId == kNone)
      slot.lacking.push_back(static_cast<std::uint32_t>(runs_.size()));
  }
  // At the end, so that places of earlier slots stay.
  slots_.insert(slots_.end(), std::make_move_iterator(new_.begin()),
                std::make_move_iterator(new_.end()));
  new_.clear();
}

/// Variables of the same name and width are the same, the first with the first where there are
/// several.
void RunMerger::MatchGroup(std::vector<Slot>& added, const Groups& groups) {
  // By name and width; several of one key in their order.
  std::map<std::pair<std::string_view, std::uint32_t>, std::deque<std::size_t>> own;
  for (const std::size_t i : groups.own) {
    own[{slots_[i].variable.name, slots_[i].variable.width}].push_back(i);
  }
  // What found no partner of its own width.
  Groups left;
  for (const std::size_t i : groups.others) {
    const auto place = own.find({added[i].variable.name, added[i].variable.width});
    if (place == own.end() || place->second.empty()) {
      left.others.push_back(i);
      continue;
    }
    slots_[place->second.front()].added = added[i].added;
    place->second.pop_front();
  }
  // The sum's variables that none of the run's matched.
  for (const std::size_t i : groups.own) {
    if (slots_[i].added.codeId == kNone) left.own.push_back(i);
  }
  // Ranges differ: bit by bit. Otherwise what is left of the run is new.
  if (!left.own.empty()) return Split(added, left);
  for (const std::size_t i : left.others) new_.push_back(std::move(added[i]));
}

/// Matches variables bit by bit, each of which is a variable of the sum from now on.
void RunMerger::Split(std::vector<Slot>& added, const Groups& groups) {
  // The run lacks the variable: nothing to take apart.
  if (groups.others.empty()) return;
  std::map<std::string, std::deque<Slot*>> byName;
  for (const std::size_t i : groups.own) {
    // All of the variable becomes bits, also those that the run does not have.
    std::vector<Slot>& pieces = pieces_[i];
    pieces.reserve(slots_[i].variable.width);  // so that they stay where they are
    for (std::uint32_t bit = slots_[i].variable.width; bit-- > 0;) {
      Slot piece = slots_[i];
      piece.variable = BitAlone(slots_[i].variable, bit);
      // The figures so far are a bit of the variable's.
      piece.before.offset += bit;
      pieces.push_back(std::move(piece));
      byName[pieces.back().variable.name].push_back(&pieces.back());
    }
  }
  // The run's bits, from the highest down, as those above.
  for (const std::size_t i : groups.others) {
    for (std::uint32_t bit = added[i].variable.width; bit-- > 0;) {
      Slot piece = added[i];
      piece.variable = BitAlone(added[i].variable, bit);
      piece.added.offset += bit;
      // A bit that the sum has not: a variable of its own, new from this run on.
      std::deque<Slot*>& same = byName[piece.variable.name];
      if (same.empty()) {
        new_.push_back(std::move(piece));
      } else {
        same.front()->added = piece.added;
        same.pop_front();
      }
    }
  }
}

/// Puts the bits in the place of the variables that they were.
void RunMerger::ReplaceSplit() {
  if (pieces_.empty()) return;
  std::vector<Slot> slots;
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    const auto place = pieces_.find(i);
    if (place == pieces_.end()) {
      slots.push_back(std::move(slots_[i]));
    } else {
      std::move(place->second.begin(), place->second.end(), std::back_inserter(slots));
    }
  }
  slots_ = std::move(slots);
  pieces_.clear();
}

/// Gives the sum's variables new codes, and these the sums of what they had before and now.
void RunMerger::AddFigures(const ActivityResult& run) {
  // A pair of sources stands for a code: two names share one as long as both their sources are the
  // same.
  std::unordered_map<SourcePair, std::uint32_t, SourcePairHash> codes;
  codes.reserve(slots_.size());
  // The widest slot of a code says how many bits it has.
  std::vector<std::size_t> widest;  // slot, by code
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    Slot& slot = slots_[i];
    const SourcePair pair{slot.before.codeId, slot.before.offset, slot.added.codeId,
                          slot.added.offset};
    // Codes are counted as they are met, in the order of slots.
    const auto [code, isNew] = codes.try_emplace(pair, static_cast<std::uint32_t>(widest.size()));
    slot.variable.codeId = code->second;
    if (isNew) {
      widest.push_back(i);
    } else if (slots_[widest[code->second]].variable.width < slot.variable.width) {
      widest[code->second] = i;
    }
  }
  // The new figures, which take the place of the old ones at the end.
  std::vector<std::uint64_t> firstBit{0};
  LargeArray<BitFigures> bits;
  // What a run lacks adds nothing: the bit was observed for less time.
  for (const std::size_t i : widest) {
    const Slot& slot = slots_[i];
    for (std::uint32_t bit = 0; bit < slot.variable.width; ++bit) {
      bits.emplace_back();
      // Before: the sum so far.
      if (slot.before.codeId != kNone) {
        ::orsa::kesncd::AddFigures(bits.back(),
                                   sum_.BitsOf(slot.before.codeId)[slot.before.offset + bit]);
      }
      // Added: the run.
      if (slot.added.codeId != kNone) {
        ::orsa::kesncd::AddFigures(bits.back(),
                                   run.BitsOf(slot.added.codeId)[slot.added.offset + bit]);
      }
    }
    firstBit.push_back(bits.size());
  }
  sum_.firstBit = std::move(firstBit);
  sum_.bits = std::move(bits);
  // From now on figures are found by the new codes.
  for (Slot& slot : slots_) {
    slot.before = {slot.variable.codeId, 0};
    slot.added = {};
  }
}

/// Rates of this run, while its rows are at hand.
void RunMerger::KeepBusiest(const ActivityRows& rows, const std::vector<std::uint32_t>& scopes) {
  const std::vector<ActivitySums> sums = rows.ModuleSums();
  for (std::uint32_t scope = 1; scope < sums.size(); ++scope) {
    const ActivitySums& own = sums[scope];
    // No bits, or none that was observed.
    const WideCount ticks = own.t0 + own.t1 + own.tx + own.tz;
    if (ticks == 0) continue;
    const double rate = static_cast<double>(own.tc) / static_cast<double>(ticks);
    BusiestRun& busiest = busiest_[scopes[scope]];
    // Equal rates: the earlier run stays.
    if (rate > busiest.togglesPerTick) busiest = {static_cast<std::uint32_t>(runs_.size()), rate};
  }
}

/// Two ways to lack a name: the run came before the first that has it, or it came later without it.
std::vector<LackingRun> RunMerger::Lacking() const {
  std::vector<LackingRun> all(runs_.size());
  std::vector<std::uint64_t> first(runs_.size() + 1);  // signals by the first run that has them
  const auto note = [&](std::uint32_t run, const Slot& slot) {
    ++all[run].signals;
    if (all[run].example.empty()) {
      all[run].example = sum_.declarations.ShortPathOf(slot.variable);
    }
  };
  // An example for those of the first way.
  std::uint32_t told = 0;  // runs before this one have an example of a signal that came later
  for (const Slot& slot : slots_) {
    // Counted below, all at once.
    ++first[slot.since];
    for (const std::uint32_t run : slot.lacking) note(run, slot);
    for (; told < slot.since; ++told) {
      if (all[told].example.empty())
        all[told].example = sum_.declarations.ShortPathOf(slot.variable);
    }
  }
  // From the last run on: how many signals came after each.
  std::uint64_t later = 0;  // signals that only later runs have
  for (std::size_t run = runs_.size(); run-- > 0;) {
    later += first[run + 1];
    all[run].signals += later;
    all[run].run = runs_[run];
  }
  // Only those that lack something are of interest.
  std::erase_if(all, [](const LackingRun& run) { return run.signals == 0; });
  return all;
}

/// The slots become the declarations' variables, in the sum's order.
ActivityResult RunMerger::Finish() {
  Declarations& declarations = sum_.declarations;
  declarations.tick = sum_.tick;
  for (const Slot& slot : slots_) {
    // Lists of variables by scope were left out so far, as slots moved.
    DumpScope& scope = declarations.scopes[slot.variable.scope];
    scope.variables.push_back(static_cast<std::uint32_t>(declarations.variables.size()));
    scope.populated = true;
    declarations.variables.push_back(slot.variable);
  }
  // From the leaves up.
  for (std::size_t scope = declarations.scopes.size(); scope-- > 1;) {
    DumpScope& outer = declarations.scopes[declarations.scopes[scope].parent];
    outer.populated = outer.populated || declarations.scopes[scope].populated;
  }
  return std::move(sum_);
}

}  // namespace orsa::kesncd
