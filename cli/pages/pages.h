// The pages written from the option table, each to a stream.
#ifndef KESNCD_CLI_PAGES_PAGES_H_
#define KESNCD_CLI_PAGES_PAGES_H_

#include <iosfwd>

#include "cli/pages/option_table.h"

namespace orsa::kesncd::cli {

void WriteManPage(std::ostream& out, const OptionTable& table);
void WriteBashCompletion(std::ostream& out, const OptionTable& table);
void WriteZshCompletion(std::ostream& out, const OptionTable& table);
void WriteFishCompletion(std::ostream& out, const OptionTable& table);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PAGES_PAGES_H_
