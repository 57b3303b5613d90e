// What a host does with the library, and what it then can tell.
#include "cli/host_figures/host_runs.h"

#include "cli/host_figures/figures.h"
#include "cli/process/messages.h"

namespace orsa::kesncd::cli {

namespace {

/// The modules that --top can name.
std::string ModulesOf(const DumpInput& input) {
  const Declarations& declarations = input.declarations();
  std::vector<std::string> modules;
  for (std::uint32_t i = 1; i < declarations.scopes.size(); ++i) {
    if (declarations.scopes[i].kind == "module") modules.push_back(declarations.ShortPathOf(i));
  }
  // Paths tell equal names apart for the user, though only a path's last part can be given.
  return "its modules are " + ShortList(modules) + "; a host knows the last part of such a path";
}

/// The library ends its messages in a newline, for hosts that print them as they are.
std::string WithoutLastNewline(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

void SayWhyZero(const DumpInput& input) {
  // 0.0 is how the library says that it read no time scale.
  if (orsa::kesncd::timeScale == 0.0) {
    Remark(input.name(), "no time scale was read, so all frequencies are 0; kesncd check says why");
  } else if (orsa::kesncd::endCycle == orsa::kesncd::startCycle) {
    Remark(input.name(), "the dump spans no time, so all frequencies are 0");
  }
}

void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input) {
  std::string message;
  // The library opens the path itself; what kind of path it gets is DumpInput's.
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFileHier(path, {}, message); });
  if (!isRead) throw RunFailure(input, message);
  SayWhyZero(input);
  // The library's tree has one root. Scopes beside it are kept, count, and are found by code, but
  // no walk from the root meets them: half a dump may be missing without a word.
  std::set<const orsa::kesncd::VmodHier*> unreachable;
  for (const auto& [code, scopes] : analyser.codeIndex) {
    for (const orsa::kesncd::VmodHier* scope : scopes) {
      if (scope->parent == nullptr && scope != analyser.hierRoot) unreachable.insert(scope);
    }
  }
  if (unreachable.empty()) return;
  Remark(input.name(),
         std::to_string(unreachable.size()) +
             " further top-level scopes with signals cannot be reached from the root " +
             analyser.hierRoot->name);
}

void ReadFlat(orsa::kesncd::KesNCD& analyser, DumpInput& input,
              const std::set<std::string>& signals, const std::string& top) {
  // Before the reading, which counts for the module of that name only.
  analyser.SetTopModule(top);
  std::string message;
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFile(path, signals, message); });
  if (!isRead) throw RunFailure(input, message);
}

/// From the free-format declarations, so also names that the library itself will not meet.
std::set<std::string> AllNames(const DumpInput& input) {
  std::set<std::string> names;
  for (const DumpVariable& variable : input.declarations().variables) names.insert(variable.name);
  return names;
}

Failure RunFailure(const DumpInput& input, const std::string& libraryMessage) {
  const std::string message = input.name() + ": " + WithoutLastNewline(libraryMessage);
  // The flag carries over from one run into the next; the program makes one run in a process, so
  // here it speaks of that one.
  if (orsa::kesncd::isTopModNameEverMatched != 0) return {FailureKind::Unusable, message};
  return {FailureKind::NothingMatched, message + "\n" + input.name() + ": " + ModulesOf(input)};
}

/// The library keeps the time scale and the span in exported variables; a run has just set them.
Facts HostFacts(const DumpInput& input, const std::string& top) {
  // Only to have one place that knows the facts' names.
  Figures figures{input.name(), {}, true};
  figures.run.nsPerTick = orsa::kesncd::timeScale;
  figures.run.firstTick = orsa::kesncd::startCycle;
  figures.run.lastTick = orsa::kesncd::endCycle;
  figures.run.spanTicks = orsa::kesncd::endCycle - orsa::kesncd::startCycle;
  return RunFacts(figures, top);
}

}  // namespace orsa::kesncd::cli
