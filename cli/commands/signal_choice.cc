// Finding a signal by what a user calls it.
#include "cli/commands/signal_choice.h"

#include "cli/commands/scope_choice.h"
#include "names/signal_search.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd::cli {

const DumpVariable& OnlySignal(const std::string& dump, const Declarations& declarations,
                               const std::string& text) {
  const SignalSearch search(declarations, Declarations::kDump, true, {text});
  const std::vector<std::uint32_t>& found = search.Answer(0).variables;
  std::string fault;
  if (found.empty()) {
    fault = "no signal " + text;
  } else if (found.size() > 1) {
    fault = text + " means several signals: " + PathsOf(found, declarations);
  } else if (const DumpVariable& signal = declarations.variables[found.front()];
             signal.width > 0 && TypeHasBits(declarations.TypeOf(signal))) {
    return signal;
  } else {
    fault = text + " has no bits";
  }
  throw Failure(FailureKind::NothingMatched, dump + ": " + fault);
}

std::string PathsOf(const std::vector<std::uint32_t>& variables, const Declarations& declarations) {
  std::vector<std::string> paths;
  paths.reserve(variables.size());
  for (const std::uint32_t id : variables) {
    paths.push_back(declarations.ShortPathOf(declarations.variables[id]));
  }
  return ShortList(paths);
}

bool IsClockName(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name.find("clk") != std::string::npos || name.find("clock") != std::string::npos;
}

}  // namespace orsa::kesncd::cli
