// The pages written from the option table, each to a stream.
#ifndef KESNCD_CLI_PAGES_PAGES_H_
#define KESNCD_CLI_PAGES_PAGES_H_

#include <iosfwd>
#include <ostream>

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

void WriteManPage(std::ostream& out, const CommandLine& line);
void WriteBashCompletion(std::ostream& out, const CommandLine& line);
void WriteZshCompletion(std::ostream& out, const CommandLine& line);
void WriteFishCompletion(std::ostream& out, const CommandLine& line);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PAGES_PAGES_H_
