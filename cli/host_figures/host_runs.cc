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
  return "its modules are " + ShortList(modules) + "; a host knows the last part of such a path";
}

std::string WithoutLastNewline(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

}  // namespace

void SayWhyZero(const DumpInput& input) {
  if (orsa::kesncd::timeScale == 0.0) {
    Remark(input.name(), "no time scale was read, so all frequencies are 0; kesncd check says why");
  } else if (orsa::kesncd::endCycle == orsa::kesncd::startCycle) {
    Remark(input.name(), "the dump spans no time, so all frequencies are 0");
  }
}

void ReadTree(orsa::kesncd::KesNCD& analyser, DumpInput& input) {
  std::string message;
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFileHier(path, {}, message); });
  if (!isRead) throw RunFailure(input, message);
  SayWhyZero(input);
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
  analyser.SetTopModule(top);
  std::string message;
  const bool isRead = input.Read(
      [&](const std::string& path) { return analyser.SetVCDFile(path, signals, message); });
  if (!isRead) throw RunFailure(input, message);
}

std::set<std::string> AllNames(const DumpInput& input) {
  std::set<std::string> names;
  for (const DumpVariable& variable : input.declarations().variables) names.insert(variable.name);
  return names;
}

Failure RunFailure(const DumpInput& input, const std::string& libraryMessage) {
  const std::string message = input.name() + ": " + WithoutLastNewline(libraryMessage);
  if (orsa::kesncd::isTopModNameEverMatched != 0) return {FailureKind::Unusable, message};
  return {FailureKind::NothingMatched, message + "\n" + input.name() + ": " + ModulesOf(input)};
}

Facts HostFacts(const DumpInput& input, const std::string& top) {
  Figures figures{input.name(), {}, true};
  figures.run.nsPerTick = orsa::kesncd::timeScale;
  figures.run.firstTick = orsa::kesncd::startCycle;
  figures.run.lastTick = orsa::kesncd::endCycle;
  figures.run.spanTicks = orsa::kesncd::endCycle - orsa::kesncd::startCycle;
  return RunFacts(figures, top);
}

}  // namespace orsa::kesncd::cli
