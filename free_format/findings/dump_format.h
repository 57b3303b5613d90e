// Files that bear a dump's name and are none.
#ifndef KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_
#define KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_

#include <string>
#include <string_view>

namespace orsa::kesncd {

/// A user who gives another file is told what it is, not that line 1 is no declaration.
struct ForeignFormat {
  std::string_view name;    // empty for what may be a VCD file
  std::string_view remedy;  // how to get a VCD file from it
};

/// Names a file's format by its first bytes. Some 4000 bytes tell all of them; fewer may leave a
/// format unknown.
ForeignFormat ForeignFormatOf(std::string_view firstBytes);

/// "is NAME, no VCD file: REMEDY"
std::string ForeignText(const ForeignFormat& format);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_
