// Writes the man page or a shell's completion to standard output while the program is built:
//   kesncd-pages man|bash|zsh|fish
#include <exception>
#include <iostream>
#include <map>
#include <string>

#include "cli/command_line.h"
#include "cli/pages/pages.h"

namespace {

/// 0 when the page was written, 1 when it could not be, 2 for wrong use.
int Write(int argc, char** argv) {
  using namespace orsa::kesncd::cli;
  // The words that cli/pages/CMakeLists.txt uses.
  const std::map<std::string, void (*)(std::ostream&, const CommandLine&)> writers{
      {"man", WriteManPage},
      {"bash", WriteBashCompletion},
      {"zsh", WriteZshCompletion},
      {"fish", WriteFishCompletion}};
  const auto writer = argc == 2 ? writers.find(argv[1]) : writers.end();
  if (writer == writers.end()) {
    std::cerr << "kesncd-pages man|bash|zsh|fish\n";
    return 2;
  }
  writer->second(std::cout, MakeCommandLine());
  // A page that is cut off must not be installed.
  return std::cout.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  return Write(argc, argv);
} catch (const std::exception& error) {
  std::cerr << "kesncd-pages: " << error.what() << "\n";
  return 1;
}
