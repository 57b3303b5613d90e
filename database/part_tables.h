// A part of a dump as an activity database keeps it until all parts are there: the figures that it
// has by itself, and what is known of its ends, so that parts add up to the whole.
#ifndef KESNCD_DATABASE_PART_TABLES_H_
#define KESNCD_DATABASE_PART_TABLES_H_

#include "activity/body_part.h"
#include "activity/code_bits.h"
#include "database/facts.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Fills the tables of parts, and adds the part's facts. What was passed over is kept elsewhere.
void WritePartTables(const BodyPart& part, Connection& to, FactsByName& facts);

/// Reads the same back; `codes` are those of the declarations. Throws Failure with Unusable.
BodyPart ReadPartTables(Connection& from, const CodeBits& codes, const FactsByName& facts,
                        std::uint64_t& budget);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_PART_TABLES_H_
