// Reading figures one way or the other, and choosing a module of theirs.
#include "cli/host_figures/figures.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "cli/host_figures/host_runs.h"
#include "cli/input/database_input.h"
#include "cli/input/reading_threads.h"
#include "cli/process/messages.h"
#include "names/frequency.h"
#include "text/failure.h"

namespace orsa::kesncd::cli {

namespace {

using orsa::kesncd::VmodHier;

/// Counts the dump, or takes the counts of a database. Both give the same figures and remarks.
Figures ReadDirectly(const FigureOptions& options) {
  Figures figures{NameOf(options.input), {}, false};
  // A database is found by its first bytes, whatever it is called.
  if (const auto database = OpenDatabase(options.input, options.window)) {
    figures.run = database->ReadHost();
    // A database may have another name now than the dump had that was counted.
    figures.origin = database->facts().dump;
  } else {
    UnpackedSource dump = OpenDump(options.input);
    // May put a thread between the packed bytes and the reading; must come before `bytes` is used.
    const unsigned jobs = UseThreads(options.input, dump);
    figures.run = jobs > 1 ? ReadHostRun(*dump.file, figures.dump, options.window, jobs)
                           : ReadHostRun(*dump.bytes, figures.dump, options.window);
  }  // and with the dump goes the line that shows how far it was read
  for (const std::string& remark : figures.run.remarks) Remark(figures.dump, remark);
  // Said once for all rows; each shows an unknown frequency.
  if (!figures.run.whyUnknown.empty()) Remark(figures.dump, figures.run.whyUnknown);
  return figures;
}

/// Turns a module tree into the declarations that all commands work on. The hosts' tree is a graph
/// of nodes with signals by code; declarations are arrays. The copy gives --as-is the same commands
/// as direct counting without a second version of each. Calling order: construct, Copy once.
class TreeCopy {
 public:
  // Scope 0 is the whole dump.
  explicit TreeCopy(HostRun& run) : run_(run) { run_.declarations.scopes.resize(1); }

  // Without recursion, as a hostile dump may nest scopes any number deep; children are pushed
  // backwards to come off in the dump's order.
  void Copy(const VmodHier& root) {
    struct Pending {
      const VmodHier* node;
      std::uint32_t parent;
    };
    std::vector<Pending> pending{{&root, Declarations::kDump}};
    while (!pending.empty()) {
      const Pending next = pending.back();
      pending.pop_back();
      const std::uint32_t scope = AddScope(*next.node, next.parent);
      const auto& below = next.node->subMods;
      for (auto child = below.rbegin(); child != below.rend(); ++child) {
        pending.push_back({*child, scope});
      }
    }
  }

 private:
  /// Appends a scope and its signals. Every scope of the tree counts as populated: the library
  /// makes nodes for modules, functions and tasks only, and --as-is shows what it makes.
  std::uint32_t AddScope(const VmodHier& node, std::uint32_t parent) {
    Declarations& declarations = run_.declarations;
    const auto scope = static_cast<std::uint32_t>(declarations.scopes.size());
    declarations.scopes[parent].scopes.push_back(scope);
    declarations.scopes.emplace_back();
    declarations.scopes[scope].name = node.name;
    // The tree does not keep the kinds; without "module" no command would take a scope for one.
    declarations.scopes[scope].kind = "module";
    declarations.scopes[scope].parent = parent;
    declarations.scopes[scope].populated = true;
    for (const auto& [symbol, signal] : node.signals) AddSignal(symbol, signal, scope);
    return scope;
  }

  // By code, since that is how a node keeps its signals: the order of the dump is lost in it.
  void AddSignal(const std::string& symbol, const orsa::kesncd::VmodSignal& signal,
                 std::uint32_t scope) {
    DumpVariable variable;
    variable.name = signal.name;
    // A host's width may be negative where the dump's number was.
    variable.width = static_cast<std::uint32_t>(std::max(signal.width, 0));
    variable.scope = scope;
    variable.codeId = CodeId(symbol, static_cast<std::uint32_t>(signal.changes));
    run_.declarations.scopes[scope].variables.push_back(
        static_cast<std::uint32_t>(run_.declarations.variables.size()));
    run_.declarations.variables.push_back(std::move(variable));
  }

  /// A code that was declared again after changes has fewer of them there: that is another signal.
  std::uint32_t CodeId(const std::string& symbol, std::uint32_t changes) {
    const auto [place, isNew] = codes_.try_emplace({symbol, changes}, run_.changes.size());
    if (isNew) run_.changes.push_back(changes);
    return static_cast<std::uint32_t>(place->second);
  }

  HostRun& run_;
  std::map<std::pair<std::string, std::uint32_t>, std::size_t> codes_;
};

}  // namespace

Cell Figures::Frequency(std::uint32_t changes) const {
  // Under --as-is a dump without a time scale has 0 MHz, as for a host.
  if (!isAsIs && !run.whyUnknown.empty()) return {};
  // A host's counter stops at 2147483647, which fits an int.
  const double frequency =
      ToggleFrequency(static_cast<int>(changes), run.spanTicks, run.nsPerTick.value_or(0));
  // An infinite one is unknown either way; a negative one, of a span that goes back, is what a host
  // gets.
  if (!std::isfinite(frequency) || (!isAsIs && frequency < 0)) return {};
  return frequency;
}

/// Signals outside of the root are not in the tree; ReadTree says how many scopes that are.
Figures FiguresOfTree(const std::string& dump, const VmodHier& root) {
  Figures figures{dump, {}, true};
  TreeCopy(figures.run).Copy(root);
  figures.run.nsPerTick = orsa::kesncd::timeScale;
  figures.run.firstTick = orsa::kesncd::startCycle;
  figures.run.lastTick = orsa::kesncd::endCycle;
  figures.run.spanTicks = orsa::kesncd::endCycle - orsa::kesncd::startCycle;
  return figures;
}

Figures ReadFigures(const FigureOptions& options) {
  // What --as-is exchanges: who reads. Everything after this is the same.
  if (!options.input.asIs) return ReadDirectly(options);
  DumpInput input(options.input);
  orsa::kesncd::KesNCD analyser;
  ReadTree(analyser, input);
  return FiguresOfTree(input.name(), *analyser.hierRoot);
}

std::string ScopeName(const Declarations& declarations, std::uint32_t scope) {
  if (scope != Declarations::kDump) return declarations.ShortPathOf(scope);
  // "/" is what --top takes for it.
  return "/ (variables outside every scope)";
}

void SayProposedTop(const Figures& figures, const std::string& given, std::uint32_t scope) {
  if (!given.empty()) return;
  Remark(figures.dump,
         "top module is " + ScopeName(figures.run.declarations, scope) + "; --top chooses another");
}

std::string RowPath(const Declarations& declarations, std::uint32_t scope) {
  // A path of a real design has some 100 characters. Without a bound, n scopes in one another would
  // give rows of n names each: a dump of a megabyte, results of many gigabytes.
  constexpr std::size_t kLongest = 1000;
  constexpr std::size_t kMostScopes = 64;  // more than a design nests
  std::uint32_t top = scope;
  std::size_t length = 0;
  // From the scope up, as far as both bounds allow.
  for (std::size_t i = 0; top != Declarations::kDump; ++i) {
    length += declarations.scopes[top].name.size() + 1;
    if (i == kMostScopes || length > kLongest) break;
    top = declarations.scopes[top].parent;
  }
  if (top == Declarations::kDump) return declarations.PathBelow(top, scope);
  // The last part alone is longer than the bound.
  if (top != scope) return ".../" + declarations.PathBelow(top, scope);
  return ".../" + declarations.scopes[scope].name.substr(0, kLongest) + "...";
}

std::uint32_t ChosenScope(const Figures& figures, const std::string& text) {
  return ChosenScope(figures.dump, figures.run.declarations, text);
}

std::vector<std::string> ModulesWithVariables(const Declarations& declarations) {
  std::vector<std::string> modules;
  for (std::uint32_t i = 1; i < declarations.scopes.size(); ++i) {
    const DumpScope& scope = declarations.scopes[i];
    if (scope.kind != "module" || scope.variables.empty()) continue;
    modules.push_back(declarations.PathOf(i));
  }
  return modules;
}

Facts RunFacts(const Figures& figures, const std::string& top) {
  const HostRun& run = figures.run;
  return {{"dump", figures.origin.empty() ? figures.dump : figures.origin},
          {"top", top},
          {"timescale_ns", run.nsPerTick ? Cell(*run.nsPerTick) : Cell()},
          {"start_tick", run.firstTick},
          {"end_tick", run.lastTick},
          {"figures", std::string("host")}};
}

}  // namespace orsa::kesncd::cli
