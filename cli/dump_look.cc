#include "cli/dump_look.h"

#include <algorithm>

#include "cli/declaration_reader.h"
#include "cli/dump_items.h"
#include "cli/exit_status.h"

namespace kesncd_cli {

namespace {

// No design's declarations are longer; other files may hold no end of them.
constexpr std::size_t kMostKept = std::size_t{1} << 30;

/// Troubles that the declarations announce for the body behind the look.
void FindInPromises(const Declarations& declarations, Findings& findings) {
  Tally ports;
  Tally longValues;
  for (const DumpVariable& variable : declarations.variables) {
    if (variable.type == "port") ports.Add(variable.line, variable.name);
    if (variable.width > DumpItems::kLongestValue) longValues.Add(variable.line, variable.name);
  }
  findings.Add(FindingKind::Ports, ports);
  findings.Add(FindingKind::LongValues, longValues);
}

bool IsReason(const Finding& finding, Reader reader) {
  const bool isGrammars =
      finding.kind == FindingKind::GrammarCodes || finding.kind == FindingKind::Attributes;
  return IsMended(finding.kind) && (!isGrammars || reader == Reader::Grammar);
}

}  // namespace

std::size_t KeptSource::Read(char* to, std::size_t most) {
  if (hasEnded_) return 0;
  const std::size_t got = ReadFully(source_, to, most);
  kept_.append(to, got);
  if (kept_.size() > kMostKept) {
    throw Failure(ExitStatus::Unusable, "the declarations do not end; is it a VCD file?");
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
  FindInDeclarations(look.declarations, findings);
  FindInPromises(look.declarations, findings);
  const BodyFacts body = FindInBody(words, watch, look.declarations, findings);
  if (!in.isWhole()) {
    findings.Add(FindingKind::MisreadSpan,
                 watch.MayMislead(body.lastTick, look.declarations.longestCode), 0, "");
  }
  look.reasons = std::move(findings).Sorted();
  std::erase_if(look.reasons, [&](const Finding& finding) { return !IsReason(finding, reader); });
  const auto same = [](const Finding& a, const Finding& b) { return a.kind == b.kind; };
  look.reasons.erase(std::unique(look.reasons.begin(), look.reasons.end(), same),
                     look.reasons.end());
  return look;
}

}  // namespace kesncd_cli
