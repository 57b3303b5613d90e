// What the declarations alone show of a dump's troubles.
#include <set>

#include "free_format/findings/dump_findings.h"
#include "free_format/prepare/new_codes.h"

namespace orsa::kesncd {

namespace {

/// Signals of several names in one scope: each such signal, and each name but its first. `prepare`
/// gives each name a code of its own, by the same sharing, so both go away by it.
void FindAliases(const Declarations& declarations, Findings& findings) {
  const auto shares = ShareCodes(declarations);
  std::set<std::pair<std::uint32_t, std::uint32_t>> signals;
  Tally doubled;
  Tally hidden;
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const DumpVariable& variable = declarations.variables[i];
    // The readers keep figures for the first name of a code in a scope only.
    const bool isHidden = shares[i].name > 0 || shares[i].isLeftOut;
    if (!isHidden && !shares[i].isRepeated) continue;
    const std::string path = hidden ? "" : declarations.ShortPathOf(variable);
    // Once for each scope that declares the code.
    if (signals.emplace(variable.scope, variable.codeId).second) doubled.Add(variable.line, path);
    if (isHidden) hidden.Add(variable.line, path);
  }
  findings.Add(FindingKind::Doubled, doubled);
  findings.Add(FindingKind::Hidden, hidden);
}

/// The first outermost module that holds signals but declares none. Where a user takes the
/// outermost module by habit, the flat run is empty.
void FindEmptyTop(const Declarations& declarations, Findings& findings) {
  for (const std::uint32_t index : declarations.scopes[Declarations::kDump].scopes) {
    const DumpScope& scope = declarations.scopes[index];
    // A scope without variables in it, as of a package, is not taken for the design.
    if (!scope.populated) continue;
    findings.Add(FindingKind::EmptyTop, scope.variables.empty(), scope.line, scope.name);
    return;
  }
}

/// Scopes that the line readers do not know. One without signals in it or below it does no harm by
/// itself; what it does to signals after it is found where they are.
void FindForeign(const Declarations& declarations, Findings& findings) {
  Tally foreign;
  // Scope 0 is the dump itself.
  for (std::size_t i = 1; i < declarations.scopes.size(); ++i) {
    const DumpScope& scope = declarations.scopes[i];
    if (!scope.populated || IsTreeKind(scope.kind)) continue;
    foreign.Add(scope.line, scope.kind + " " + scope.name);
  }
  findings.Add(FindingKind::Foreign, foreign);
}

}  // namespace

void FindInDeclarations(const Declarations& declarations, Findings& findings) {
  const LineReading& lines = declarations.lines;
  const std::string& timescale = declarations.timescale;
  const std::uint64_t line = declarations.timescaleLine;
  findings.Add(FindingKind::NoTimescale, line == 0, 0, "");
  findings.Add(FindingKind::OddTimescale, line != 0 && !declarations.tick, line, timescale);
  findings.Add(FindingKind::UnreadTimescale, declarations.tick && !lines.timescale, line,
               timescale);
  findings.Add(FindingKind::LateTimescale, lines.lateTimescale);
  // Torn or open: the dump ended before its body, or the body came without $enddefinitions.
  findings.Add(FindingKind::Torn, !declarations.ended && !declarations.hasWord, 0, "");
  findings.Add(FindingKind::OpenDefinitions, !declarations.ended && declarations.hasWord, 0, "");
  findings.Add(FindingKind::Unreachable, lines.unreachable);
  findings.Add(FindingKind::Overlooked, lines.overlooked);
  findings.Add(FindingKind::QuotedDeclarations, lines.quoted);
  findings.Add(FindingKind::SwitchedOff, lines.switchedOff);
  findings.Add(FindingKind::Keywords, lines.keywords);
  findings.Add(FindingKind::WrongScope, lines.wrongScope);
  FindForeign(declarations, findings);
  findings.Add(FindingKind::ScopeLines, lines.scopeLines);
  findings.Add(FindingKind::Split, lines.split);
  findings.Add(FindingKind::Late, lines.late);
  findings.Add(FindingKind::GrammarCodes, lines.grammarCodes);
  findings.Add(FindingKind::Attributes, lines.attributes);
  findings.Add(FindingKind::Malformed, declarations.malformed);
  findings.Add(FindingKind::NotHandled, declarations.notHandled);
  FindEmptyTop(declarations, findings);
  FindAliases(declarations, findings);
}

}  // namespace orsa::kesncd
