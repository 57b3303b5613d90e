// When a dump's modules toggled, as an activity database keeps it beside the sums of the whole
// time.
#ifndef KESNCD_DATABASE_PROFILE_TABLES_H_
#define KESNCD_DATABASE_PROFILE_TABLES_H_

#include "activity/profile/profile.h"
#include "database/fact_reader.h"
#include "database/facts.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Fills the tables of a profile, and adds its facts.
void WriteProfileTables(const KeptProfile& kept, Connection& to, FactsByName& facts);

/// Reads the same back for the declarations that it is of. Throws Failure with Unusable.
KeptProfile ReadProfileTables(Connection& from, const Declarations& declarations,
                              const FactReader& facts, std::uint64_t& budget);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_PROFILE_TABLES_H_
