// Sums for reports, and the choice of what is most worth a look.
#include "export/report_choice.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "activity/code_bits.h"
#include "activity/profile/module_shares.h"

namespace orsa::kesncd {

namespace {

/// Sums of modules, each code's bits as its shares say. A share says which bits of a code belong to
/// a module, and whether they are added or taken off there.
std::vector<ReportSums> SumsOf(const ActivityResult& result, const ModuleShares& shares,
                               std::size_t modules) {
  std::vector<ReportSums> sums(modules);
  for (std::uint32_t codeId = 0; codeId < result.declarations.codes.size(); ++codeId) {
    const std::span<const BitFigures> bits = result.BitsOf(codeId);
    for (const ModuleShare& share : shares.Of(codeId)) {
      for (std::uint32_t bit = share.from; bit < share.to; ++bit) {
        sums[share.module].Add(bits[bit], share.times);
      }
    }
  }
  return sums;
}

bool HasToggles(const ReportSums& sums) {
  return sums.tc > 0;
}

/// Marks the `most` signals that come first of those wanted; equal ones in their order. `among` are
/// the signals that may be marked at all; `marked` is by index in `signals`.
template <class IsWanted, class KeyOf>
void MarkFirst(const std::vector<ReportSignal>& signals, const std::vector<std::uint32_t>& among,
               std::size_t most, IsWanted isWanted, KeyOf keyOf, std::vector<bool>& marked) {
  std::vector<std::uint32_t> found;
  std::copy_if(among.begin(), among.end(), std::back_inserter(found),
               [&](std::uint32_t at) { return isWanted(signals[at].sums); });
  const auto end = found.begin() + static_cast<std::ptrdiff_t>(std::min(most, found.size()));
  // Only the first ones have to be in order.
  std::partial_sort(found.begin(), end, found.end(), [&](std::uint32_t one, std::uint32_t other) {
    const auto key = keyOf(signals[one].sums);
    const auto others = keyOf(signals[other].sums);
    return key != others ? key > others : one < other;
  });
  for (auto at = found.begin(); at != end; ++at) marked[*at] = true;
}

/// Marks the most active signals of every module, as many of each as there is room for. Fair to
/// quiet modules: the first of each module, then the second of each, as long as a whole rank has
/// room.
void MarkMostOfEach(const std::vector<ReportSignal>& signals, std::vector<std::uint32_t> among,
                    std::size_t room, std::vector<bool>& marked) {
  // Modules together, in each the most active ones first.
  std::stable_sort(among.begin(), among.end(), [&](std::uint32_t one, std::uint32_t other) {
    if (signals[one].module != signals[other].module) {
      return signals[one].module < signals[other].module;
    }
    return signals[one].sums.tc > signals[other].sums.tc;
  });
  std::vector<std::size_t> ranks;   // of the signals in their modules
  std::vector<std::size_t> ofRank;  // how many signals have each rank
  for (std::size_t i = 0; i < among.size(); ++i) {
    const bool goesOn = i > 0 && signals[among[i]].module == signals[among[i - 1]].module;
    ranks.push_back(goesOn ? ranks.back() + 1 : 0);
    if (ranks.back() == ofRank.size()) ofRank.push_back(0);
    ++ofRank[ranks.back()];
  }
  // How many ranks fit.
  std::size_t each = 0;
  while (each < ofRank.size() && ofRank[each] <= room) room -= ofRank[each++];
  for (std::size_t i = 0; i < among.size(); ++i) {
    if (ranks[i] < each) marked[among[i]] = true;
  }
}

}  // namespace

void ReportSums::Add(const BitFigures& bit, std::int64_t times) {
  // As numbers that wrap around: -1 takes off.
  const auto narrow = static_cast<std::uint64_t>(times);
  const auto wide = static_cast<WideCount>(static_cast<__int128_t>(times));
  bits += narrow;
  still += bit.tc == 0 ? narrow : 0;
  t1 += wide * bit.t1;
  tx += wide * bit.tx;
  tz += wide * bit.tz;
  tc += wide * bit.tc;
  ig += wide * bit.ig;
}

ReportSums& ReportSums::operator+=(const ReportSums& other) {
  bits += other.bits;
  still += other.still;
  t1 += other.t1;
  tx += other.tx;
  tz += other.tz;
  tc += other.tc;
  ig += other.ig;
  return *this;
}

/// The order of the steps matters: sums, then signals, then the order of modules by their sums.
ReportSource::ReportSource(const ActivityResult& counted, const Profile& windows)
    : result(counted), profile(windows) {
  const ModuleTree& tree = profile.modules;
  const Declarations& declarations = result.declarations;
  // Each code once in every module that has a name of it; with all below after AddUp.
  totals = SumsOf(result, ModuleShares::ByName(declarations, tree), tree.size());
  tree.AddUp(totals);
  // Each code in one module only, so that own sums add up to the total.
  own = SumsOf(result, ModuleShares::ByOwner(declarations, CodeBits(declarations), tree),
               tree.size());
  // The same rows as `kesncd activity` has.
  ActivityRows(result).ForEachSignal(Declarations::kDump, [&](const SignalRow& row) {
    if (row.IsWhollyRepeated()) return;
    ReportSignal signal{row.variableId, tree.places[row.variable.scope], {}};
    for (const BitFigures& bit : row.figures) signal.sums.Add(bit, 1);
    signals.push_back(signal);
  });
  // By module, in a module in the dump's order.
  std::stable_sort(signals.begin(), signals.end(), [](const ReportSignal& one, const auto& other) {
    return one.module < other.module;
  });
  // The whole dump is there even if it has no bits.
  for (std::uint32_t module = 0; module < tree.size(); ++module) {
    if (module == 0 || totals[module].bits > 0) order.push_back(module);
  }
  // A module has at least the toggles of those in it, so none goes before the one around it.
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t one, std::uint32_t other) {
    if (totals[one].tc != totals[other].tc) return totals[one].tc > totals[other].tc;
    // Of equal toggles the outer one first: it may be the same activity.
    return tree.depths[one] < tree.depths[other];
  });
}

ReportChoice::ReportChoice(const ReportSource& source, const ReportLimits& limits) {
  ListModules(source, limits);
  ListCourses(source, limits);
  ListSignals(source, limits);
}

/// Those first in the order, so a listed module's outer ones are listed before it.
void ReportChoice::ListModules(const ReportSource& source, const ReportLimits& limits) {
  const ModuleTree& tree = source.profile.modules;
  for (const std::uint32_t module : source.order) {
    if (modules.size() == limits.modules) break;
    if (tree.depths[module] <= limits.levels) modules.push_back(module);
  }
  // Places follow the tree's order, not that of activity.
  std::sort(modules.begin(), modules.end());
  names.resize(modules.size());
  hidden.resize(modules.size());
  own.resize(modules.size());
  places.resize(tree.size());
  // Modules and listed ones side by side: both are in the tree's order.
  std::uint32_t next = 0;
  for (std::uint32_t module = 0; module < tree.size(); ++module) {
    const bool isListed = next < modules.size() && modules[next] == module;
    // A module comes after the one around it, whose place is known.
    places[module] = isListed ? next++ : places[tree.parents[module]];
    if (!isListed && source.totals[module].bits > 0) ++hidden[places[module]];
    own[places[module]] += source.own[module];
  }
  for (const ReportSignal& signal : source.signals) ++names[places[signal.module]];
}

/// A course is a row of numbers by window, the largest thing on the page: only so many.
void ReportChoice::ListCourses(const ReportSource& source, const ReportLimits& limits) {
  const ModuleTree& tree = source.profile.modules;
  for (const std::uint32_t module : source.order) {
    if (withCourse.size() == limits.courses) break;
    // Only of modules that are listed themselves.
    if (tree.depths[module] <= limits.levels && modules[places[module]] == module) {
      withCourse.push_back(places[module]);
    }
  }
  std::sort(withCourse.begin(), withCourse.end());
  // By place: its own, or that of the nearest module above with one.
  courseOf.resize(modules.size());
  std::uint32_t next = 0;
  for (std::uint32_t place = 0; place < modules.size(); ++place) {
    const bool hasCourse = next < withCourse.size() && withCourse[next] == place;
    // Place 0, the whole dump, always has one: it is first in the order.
    courseOf[place] = hasCourse ? next++ : courseOf[places[tree.parents[modules[place]]]];
  }
}

/// A quarter of the room at most for each of the page's four lists; the rest by modules.
void ReportChoice::ListSignals(const ReportSource& source, const ReportLimits& limits) {
  const std::vector<ReportSignal>& all = source.signals;
  std::vector<std::uint32_t> possible;  // signals of modules that are listed
  for (std::uint32_t at = 0; at < all.size(); ++at) {
    if (modules[places[all[at].module]] == all[at].module) possible.push_back(at);
  }
  // By index: whether it is listed.
  std::vector<bool> marked(all.size());
  const std::size_t most = std::min(limits.standOut, limits.signals / 4);
  const auto mark = [&](auto isWanted, auto keyOf) {
    MarkFirst(all, possible, most, isWanted, keyOf, marked);
  };
  // The most active.
  mark(HasToggles, [](const ReportSums& sums) { return sums.tc; });
  // The widest of those that never toggle.
  mark([](const ReportSums& sums) { return !HasToggles(sums); },
       [](const ReportSums& sums) { return sums.bits; });
  // Those that were x for most of the time.
  mark([](const ReportSums& sums) { return sums.tx > 0; },
       [](const ReportSums& sums) {
         return static_cast<double>(sums.tx) / static_cast<double>(sums.bits);
       });
  // Those with most glitches.
  mark([](const ReportSums& sums) { return sums.ig > 0; },
       [](const ReportSums& sums) { return sums.ig; });
  // What is left of the room, to the most active of each module.
  std::vector<std::uint32_t> others;
  std::copy_if(possible.begin(), possible.end(), std::back_inserter(others),
               [&](std::uint32_t at) { return !marked[at]; });
  const auto taken = static_cast<std::size_t>(std::count(marked.begin(), marked.end(), true));
  MarkMostOfEach(all, std::move(others), limits.signals - std::min(taken, limits.signals), marked);
  // What is left goes into sums of the modules.
  restSignals.resize(modules.size());
  restToggles.resize(modules.size());
  for (std::uint32_t at = 0; at < all.size(); ++at) {
    if (marked[at]) {
      signals.push_back(at);
    } else {
      ++restSignals[places[all[at].module]];
      restToggles[places[all[at].module]] += all[at].sums.tc;
    }
  }
}

}  // namespace orsa::kesncd
