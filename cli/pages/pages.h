// The pages written from the option table, each to a stream.
//
// Written while the program is built, by kesncd-pages, and installed beside it: kesncd.1 and the
// completions kesncd (bash), _kesncd (zsh) and kesncd.fish. Since they come from the table that the
// program parses, no option can be missing in them.
#ifndef KESNCD_CLI_PAGES_PAGES_H_
#define KESNCD_CLI_PAGES_PAGES_H_

#include <iosfwd>
#include <ostream>

#include "cli/options/option_list.h"

namespace orsa::kesncd::cli {

/// Of a table as MakeCommandLine gives it. Errors of the stream are the caller's to look at.
void WriteManPage(std::ostream& out, const CommandLine& line);
/// Commands, options, the values that an option may have, and files where it takes one.
void WriteBashCompletion(std::ostream& out, const CommandLine& line);
void WriteZshCompletion(std::ostream& out, const CommandLine& line);
void WriteFishCompletion(std::ostream& out, const CommandLine& line);

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PAGES_PAGES_H_
