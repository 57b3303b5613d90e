// Finding a signal by what a user calls it.
#include "cli/selection/signal_choice.h"

#include <string_view>
#include <unordered_set>

#include "cli/selection/scope_choice.h"
#include "names/signal_search.h"
#include "text/failure.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd::cli {

namespace {

/// Variables called so without their range, "data" or "soc/data" for the dump's "data[7:0]", each
/// signal once, by its first name. SignalSearch does not take "data" for a bus as a whole, so this
/// comes after it found nothing.
std::vector<std::uint32_t> FindWithoutRange(const Declarations& declarations,
                                            const std::string& text) {
  // Scopes of the text, if it has any, are compared as the end of the path below.
  const std::size_t slash = text.rfind('/');
  const std::string_view name =
      std::string_view(text).substr(slash == std::string::npos ? 0 : slash + 1);
  std::vector<std::uint32_t> found;
  std::unordered_set<std::uint32_t> codes;
  for (std::uint32_t id = 0; id < declarations.variables.size(); ++id) {
    const DumpVariable& variable = declarations.variables[id];
    // The cheap test first: this walks all variables of the dump.
    if (variable.width == 0 || BitNames(variable).Base() != name) continue;
    // Slashes on both sides make whole parts match only: "c/data" is no end of "soc/data".
    const std::string path = "/" + declarations.PathOf(variable.scope) + "/" + std::string(name);
    if (path.ends_with("/" + text) && codes.insert(variable.codeId).second) found.push_back(id);
  }
  return found;
}

}  // namespace

const DumpVariable& OnlySignal(const std::string& dump, const Declarations& declarations,
                               const std::string& text) {
  // Exact: letter case counts.
  const SignalSearch search(declarations, Declarations::kDump, true, {text});
  std::vector<std::uint32_t> found = search.Answer(0).variables;
  const bool isBit = search.Answer(0).isBit;
  if (found.empty()) found = FindWithoutRange(declarations, text);
  std::string fault;
  if (found.empty()) {
    fault = "no signal " + text;
  } else if (found.size() > 1) {
    fault = text + " means several signals: " + PathsOf(found, declarations);
  } else if (const DumpVariable& signal = declarations.variables[found.front()];
             signal.width > 1 && isBit) {
    fault = text + " is one bit of " + declarations.ShortPathOf(signal) + ": name all of it";
  } else if (signal.width > 0 && TypeHasBits(declarations.TypeOf(signal))) {
    // A real or an event may be the only one that is called so; that is worth another message.
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
  // ASCII only, whatever the locale says of other letters.
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name.find("clk") != std::string::npos || name.find("clock") != std::string::npos;
}

}  // namespace orsa::kesncd::cli
