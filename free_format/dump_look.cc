#include "free_format/dump_look.h"

#include <algorithm>

#include "free_format/declaration_reader.h"
#include "free_format/dump_items.h"
#include "text/failure.h"

namespace orsa::kesncd {

namespace {

// No design's declarations are longer; other files may hold no end of them.
constexpr std::size_t kMostKept = std::size_t{1} << 30;

/// The widest variable whose values reach a reader in one piece.
std::uint32_t WidestOf(Reader reader) {
  constexpr std::uint32_t kWidestInLines = 4000;
  return reader == Reader::Lines ? kWidestInLines : DumpItems::kLongestValue;
}

/// Troubles that the declarations announce for the body behind the look.
void FindInPromises(const Declarations& declarations, Reader reader, Findings& findings) {
  Tally ports;
  Tally longValues;
  for (const DumpVariable& variable : declarations.variables) {
    if (variable.type == "port") ports.Add(variable.line, variable.name);
    if (variable.width > WidestOf(reader)) longValues.Add(variable.line, variable.name);
  }
  findings.Add(FindingKind::Ports, ports);
  findings.Add(FindingKind::LongValues, longValues);
}

bool IsForGrammarOnly(FindingKind kind) {
  return kind == FindingKind::GrammarCodes || kind == FindingKind::Attributes ||
         kind == FindingKind::LongValues;
}

/// The findings for which a dump is prepared, each kind once.
std::vector<Finding> ReasonsAmong(const std::vector<Finding>& found, Findings promises,
                                  Reader reader) {
  for (const Finding& finding : found) {
    const bool concerns = reader == Reader::Grammar || !IsForGrammarOnly(finding.kind);
    if (IsMended(finding.kind) && concerns) promises.Add(finding.kind, finding.tally);
  }
  std::vector<Finding> reasons = std::move(promises).Sorted();
  const auto same = [](const Finding& a, const Finding& b) { return a.kind == b.kind; };
  reasons.erase(std::unique(reasons.begin(), reasons.end(), same), reasons.end());
  return reasons;
}

}  // namespace

std::size_t KeptSource::Read(char* to, std::size_t most) {
  if (hasEnded_) return 0;
  const std::size_t got = ReadFully(source_, to, most);
  kept_.append(to, got);
  if (kept_.size() > kMostKept) {
    throw Failure(FailureKind::Unusable, "the declarations do not end; is it a VCD file?");
  }
  isWhole_ = got < most;
  hasEnded_ = endsSoon_;
  if (!endsSoon_ || isWhole_) return got;
  const std::size_t newline = std::string_view(to, got).rfind('\n');
  return newline == std::string_view::npos ? got : newline + 1;
}

DumpLook LookAtDump(KeptSource& in, const std::string& name, Reader reader) {
  DumpWords words(in);
  SlotWatch watch;
  words.Show(watch);
  DumpLook look{ReadDeclarations(words, name), {}};
  in.EndSoon();
  Findings findings;
  Findings promises;
  FindInDeclarations(look.declarations, findings);
  FindInPromises(look.declarations, reader, promises);
  const BodyFacts body = FindInBody(words, watch, look.declarations, findings);
  findings.Add(FindingKind::ControlBytes, words.Controls());
  const bool mayMislead =
      !in.isWhole() && watch.MayMislead(body.lastTick, look.declarations.longestCode);
  promises.Add(FindingKind::MisreadSpan, mayMislead, 0, "");
  look.reasons = ReasonsAmong(std::move(findings).Sorted(), std::move(promises), reader);
  return look;
}

}  // namespace orsa::kesncd
