// What a dump holds that could not be read as it stands, in words. Figures are those of what could
// be read, so every command that gives some says what was not.
#ifndef KESNCD_FREE_FORMAT_REMARKS_H_
#define KESNCD_FREE_FORMAT_REMARKS_H_

#include <string>
#include <vector>

#include "free_format/dump_items.h"
#include "vcd/declarations.h"
#include "vcd/tally.h"

namespace orsa::kesncd {

/// "TEXT: COUNT (first at line LINE: EXAMPLE)". Line and example are left out where there are none.
/// The example is not made printable here.
std::string RemarkOn(const std::string& text, const Tally& tally);

/// One text for each kind of trouble, the gravest first; none for a dump that was read whole.
std::vector<std::string> ReadingRemarks(const Declarations& declarations, const ItemTallies& items);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_REMARKS_H_
