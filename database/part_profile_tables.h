// Toggles over time in a part of a dump, as an activity database keeps them until all parts are
// there.
//
// Beside the module's sums there is what joining needs: `part_opening` has the first known value of
// each bit, which may be a toggle after the part before, and `part_level` the last one. Windows of
// `part_toggles` count from the part's first, those of `part_unobserved` from the dump's.
#ifndef KESNCD_DATABASE_PART_PROFILE_TABLES_H_
#define KESNCD_DATABASE_PART_PROFILE_TABLES_H_

#include "activity/profile/profile_part.h"
#include "database/fact_reader.h"
#include "database/facts.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Fills the tables, and adds the facts.
void WritePartProfile(const ProfilePart& part, Connection& to, FactsByName& facts);

/// The windows alone, from the facts. Throws Failure with Unusable.
PartWindows PartWindowsOf(const FactReader& facts);

/// Reads all back. Throws Failure with Unusable. Whether numbers of codes, sums and windows are
/// those of the dump is looked at by who adds parts up (see ProfileSum::Add).
ProfilePart ReadPartProfile(Connection& from, const FactReader& facts, std::uint64_t& budget);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_PART_PROFILE_TABLES_H_
