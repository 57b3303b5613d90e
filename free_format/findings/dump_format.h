// Files that bear a dump's name and are none.
#ifndef KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_
#define KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_

#include <string>
#include <string_view>

namespace orsa::kesncd {

struct ForeignFormat {
  std::string_view name;    // empty for what may be a VCD file
  std::string_view remedy;  // how to get a VCD file from it
};

/// Names a file's format by its first bytes.
ForeignFormat ForeignFormatOf(std::string_view firstBytes);

/// "is NAME, no VCD file: REMEDY"
std::string ForeignText(const ForeignFormat& format);

}  // namespace orsa::kesncd

#endif  // KESNCD_FREE_FORMAT_FINDINGS_DUMP_FORMAT_H_
