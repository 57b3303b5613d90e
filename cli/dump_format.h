// Files that bear a dump's name and are none.
#ifndef KESNCD_CLI_DUMP_FORMAT_H_
#define KESNCD_CLI_DUMP_FORMAT_H_

#include <string>
#include <string_view>

namespace kesncd_cli {

struct ForeignFormat {
  std::string_view name;    // empty for what may be a VCD file
  std::string_view remedy;  // how to get a VCD file from it
};

/// Names a file's format by its first bytes.
ForeignFormat ForeignFormatOf(std::string_view firstBytes);

/// "is NAME, no VCD file: REMEDY"
std::string ForeignText(const ForeignFormat& format);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_DUMP_FORMAT_H_
