// A part of a dump as an activity database keeps it until all parts are there: the figures that it
// has by itself, and what is known of its ends, so that parts add up to the whole.
//
// Two tables: `part_bit` has the figures and edges of bits by piece (front, middle, tail),
// `part_code` the hosts' counts by code. All that is one number is a fact, "part_begin" and so on.
// Bits and codes without anything are left out: a part of a large dump has values for few of them.
#ifndef KESNCD_DATABASE_PART_TABLES_H_
#define KESNCD_DATABASE_PART_TABLES_H_

#include "activity/body_part.h"
#include "activity/code_bits.h"
#include "database/fact_reader.h"
#include "database/facts.h"
#include "database/sqlite.h"

namespace orsa::kesncd {

/// Fills the tables of parts, which must be there and empty, and adds the part's facts, sums over
/// the tables among them ("checksum_part_bit"). What was passed over goes into `tally`, as of whole
/// runs.
void WritePartTables(const BodyPart& part, Connection& to, FactsByName& facts);

/// Reads the same back; `codes` are those of the declarations, `facts` those of the file, `budget`
/// is what its texts may still take (see TableReader). The result has as many bits and codes as
/// `codes`, however few rows there are. Throws Failure with Unusable.
BodyPart ReadPartTables(Connection& from, const CodeBits& codes, const FactReader& facts,
                        std::uint64_t& budget);

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_PART_TABLES_H_
