// All that is counted of a dump beside its figures, one after the other: what keeps, sums or shows
// it goes through this list, so that nothing is forgotten.
//
// A database stores each under its name, a merge adds those of equal names, and both work for a
// Result that is const as well as for one that is to be changed. A name that is stored must never
// change its meaning; new ones may be added.
#ifndef KESNCD_ACTIVITY_ACTIVITY_TALLIES_H_
#define KESNCD_ACTIVITY_ACTIVITY_TALLIES_H_

#include "activity/activity_result.h"

namespace orsa::kesncd {

/// Calls `visit(name, tally)` for all that a reader of a run's figures is told of the dump. Each
/// tally has a count, and the line and an example of the first case. The order has no meaning.
template <class Result, class Visit>
void ForEachTally(Result& result, Visit visit) {
  auto& items = result.notes.items;
  // Of variables.
  visit("types_without_bits", result.notes.typesWithoutBits);
  visit("without_width", result.notes.withoutBits);
  // Of declarations: see Declarations.
  visit("malformed", result.declarations.malformed);
  visit("unbalanced", result.declarations.unbalanced);
  // Of the body: see ItemTallies.
  visit("weak", items.weak);
  visit("ports", items.ports);
  visit("strings", items.strings);
  visit("undeclared", items.undeclared);
  visit("strays", items.strays);
  visit("fractions", items.fractions);
  visit("backward", items.backward);
  visit("bad_stamps", items.badStamps);
  visit("cut_stamp", items.cutStamp);
  visit("late", items.late);
  visit("keywords", items.keywords);
  visit("quoted", items.quoted);
  visit("unended", items.unended);
  visit("torn", items.torn);
}

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_ACTIVITY_TALLIES_H_
