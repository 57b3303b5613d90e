// Adds up the activity of several dumps of one design: a regression's tests, each with its own
// stimuli. Figures of equal paths are summed, so that means weigh every run by its time.
//
// How it goes, for each run: its times are brought to the finest tick, its scopes and variables
// matched with those of the sum, and the bits of each matched pair added. Identifier codes of a run
// mean nothing to the others; the sum gives out codes of its own.
#ifndef KESNCD_ACTIVITY_RUN_MERGER_H_
#define KESNCD_ACTIVITY_RUN_MERGER_H_

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "activity/activity_result.h"
#include "activity/activity_rows.h"

namespace orsa::kesncd {

/// What a run lacks of the names that others have. For a remark to the user: such a run may be of
/// another version of the design.
struct LackingRun {
  std::string run;
  std::uint64_t signals = 0;
  std::string example;  // the path of one of them
};

/// The run in which a module toggles most, by scope of the sum. Rates rather than counts, since
/// runs differ in length.
struct BusiestRun {
  std::uint32_t run = 0;       // in the order in which they were added
  double togglesPerTick = -1;  // and bit; below 0: the module has no bits in any run
};

/// Calling order: construct, Add each run, then the rest. Memory is that of the sum and of the run
/// in hand. Not to be used after Finish, except for what it says of runs.
class RunMerger {
 public:
  /// Throws Failure with Unusable where sums would not fit into 64 bits, or where only some of the
  /// runs say how long a tick is. Figures do not depend on the order of runs; the date, the version
  /// and the order of names are those of the first that has them. `name` is what messages call the
  /// run. After a failure the merger is of no more use.
  void Add(ActivityResult run, const std::string& name);

  /// Names, in the order of Add.
  const std::vector<std::string>& runs() const { return runs_; }
  // Variables of the sum so far.
  std::uint64_t signals() const { return slots_.size(); }
  /// The runs that lack names which others have. In the order of Add; a run that has all names is
  /// not in it.
  std::vector<LackingRun> Lacking() const;
  /// By scope of the sum, whose number 0 is the whole dump.
  const std::vector<BusiestRun>& busiest() const { return busiest_; }
  /// The sum; bits that a run lacks were observed for less than the sum's observed time. Once,
  /// last.
  ActivityResult Finish();

 private:
  /// Where a variable's figures are: as many bits of a code as the variable is wide, from an offset
  /// on.
  struct Source {
    std::uint32_t codeId = kNone;  // kNone: no figures yet
    std::uint32_t offset = 0;      // of a bit that was split off a bus, its place in the code

    bool operator==(const Source&) const = default;
  };
  /// A variable of the sum that is being made, or of the run that is added.
  struct Slot {
    DumpVariable variable;               // its scope is one of the sum
    std::uint32_t since = 0;             // the first run that has it
    std::vector<std::uint32_t> lacking;  // later ones that do not
    Source before;                       // in the sum so far
    Source added;                        // in the run that is added
  };
  /// Slots of one scope and base name: of the sum so far, and of the run that is added. Places in
  /// slots_ and in the list of the run's slots.
  struct Groups {
    std::vector<std::size_t> own, others;
  };
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// The steps of Add, in the order in which they are called.
  void AlignTicks(ActivityResult& run);
  void AddFacts(const ActivityResult& run);
  std::vector<std::uint32_t> AddScopes(const Declarations& declarations);
  std::vector<Slot> SlotsOf(const ActivityRows& rows, const Declarations& declarations,
                            const std::vector<std::uint32_t>& scopes);
  bool MatchInOrder(std::vector<Slot>& added);
  void MatchByName(std::vector<Slot>& added);
  void MatchGroup(std::vector<Slot>& added, const Groups& groups);
  void Split(std::vector<Slot>& added, const Groups& groups);
  void ReplaceSplit();
  void AddFigures(const ActivityResult& run);
  void KeepBusiest(const ActivityRows& rows, const std::vector<std::uint32_t>& scopes);
  void ScaleSum(std::uint64_t factor);

  // Figures so far; its declarations have scopes and types, but variables only after Finish.
  ActivityResult sum_;
  std::vector<Slot> slots_;  // the sum's variables
  // Bits that take a slot's place, by place in slots_; filled by Split, used up by ReplaceSplit.
  std::map<std::size_t, std::vector<Slot>> pieces_;
  std::vector<Slot> new_;          // to come after all slots
  std::vector<std::string> runs_;  // their names
  std::vector<BusiestRun> busiest_;
  // A scope's number in the sum, by its parent's number and its name: "3/fifo".
  std::unordered_map<std::string, std::uint32_t> scopeByPath_;
  // By text, as runs number their types differently.
  std::unordered_map<std::string, std::uint32_t> typeIds_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_RUN_MERGER_H_
