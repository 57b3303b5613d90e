// What a dump's body shows of its troubles.
//
// Counters are filled in while the body is read (BodyCheck, DumpItems); when all is read, they
// become findings here. A tally of 0 is none.
#include <array>
#include <charconv>
#include <memory>
#include <string>

#include "free_format/body_reader.h"
#include "free_format/declaration_reader.h"
#include "free_format/dump_items.h"
#include "free_format/findings/body_account.h"
#include "free_format/findings/body_check.h"
#include "free_format/findings/dump_findings.h"
#include "free_format/parted_reading.h"
#include "vcd/bit_names.h"

namespace orsa::kesncd {

namespace {

// A larger share is worth knowing.
constexpr double kUnknownShare = 0.01;  // of a signal's changes

/// As a double's shortest text, since doubles are what the line readers have.
std::string TickText(double ticks) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.begin(), text.end(), ticks, std::chars_format::general);
  return {text.data(), end.ptr};
}

/// What was passed over while the body was read. Empty tallies are dropped by Add.
void FindInItems(const ItemTallies& items, Findings& findings) {
  findings.Add(FindingKind::QuotedItems, items.quoted);
  findings.Add(FindingKind::PortCommands, items.keywords);
  findings.Add(FindingKind::Ports, items.ports);
  findings.Add(FindingKind::Backward, items.backward);
  findings.Add(FindingKind::CutStamp, items.cutStamp);
  findings.Add(FindingKind::BadStamps, items.badStamps);
  findings.Add(FindingKind::Weak, items.weak);
  findings.Add(FindingKind::Undeclared, items.undeclared);
  findings.Add(FindingKind::Strings, items.strings);
  findings.Add(FindingKind::Unended, items.unended);
  findings.Add(FindingKind::TornValue, items.torn);
  findings.Add(FindingKind::LateDeclarations, items.late);
  findings.Add(FindingKind::Strays, items.strays);
  findings.Add(FindingKind::Fractions, items.fractions);
}

/// Where the body's items stand. A reader that takes whole lines misses what shares one.
void FindInLines(const Declarations& declarations, const BodyAccount& body,
                 const ItemTallies& items, Findings& findings) {
  // The body begins on the line of "$enddefinitions $end".
  findings.Add(FindingKind::OpenDefinitions, declarations.ended && body.definitionsEnd > 0,
               body.definitionsEnd, "");
  findings.Add(FindingKind::StampsNotAlone, body.sharedStamps);
  findings.Add(FindingKind::ChangesInLine, body.changesInLine);
  findings.Add(FindingKind::CommandsNotAlone, body.sharedCommands);
  findings.Add(FindingKind::LongValues, body.longValues);
  findings.Add(FindingKind::BeforeFirstStamp, body.beforeFirstStamp);
  findings.Add(FindingKind::ControlBytes, body.controls);
  // A stamp or a value that is cut off is a finding of its own.
  findings.Add(FindingKind::OpenEnd, body.endsOpen && !items.cutStamp && !items.torn,
               body.lines + 1, "");
}

/// The span, and what the line readers take it for.
void FindInStamps(const BodyAccount& body, Findings& findings) {
  const BodyFacts& facts = body.facts;
  // Host readers keep stamps as doubles.
  const auto first = static_cast<double>(facts.firstTick);
  const auto last = static_cast<double>(facts.lastTick);
  // Also where there is no stamp at all.
  findings.Add(FindingKind::NoSpan, facts.firstTick == facts.lastTick, 0, "");
  // Beyond 2^53 the difference of two doubles need not be that of the ticks.
  findings.Add(FindingKind::HugeStamps,
               last - first != static_cast<double>(facts.lastTick - facts.firstTick),
               body.lastStampLine, StampText(facts.lastTick));
  // Read from slots that may show a longer stamp's tail.
  const double readFirst = body.firstStamp.ReadAs(first);
  const double readLast = body.lastStamp.ReadAs(last);
  // Stamps that share their lines are a finding of their own, and the cause then.
  findings.Add(FindingKind::MisreadSpan,
               (readFirst != first || readLast != last) && !body.sharedStamps, body.lastStampLine,
               TickText(readFirst) + " to " + TickText(readLast));
}

/// The variables whose code meets a condition. Aliases count one by one: each is a signal to its
/// user.
template <class Meets>
Tally Signals(const Declarations& declarations, const BodyAccount& body, Meets meets) {
  // By type, so that texts are compared once for each type only.
  std::vector<bool> hasBits;
  for (const std::string& type : declarations.types) hasBits.push_back(TypeHasBits(type));
  Tally signals;
  for (const DumpVariable& variable : declarations.variables) {
    if (!hasBits[variable.typeId] || !meets(body.codes[variable.codeId])) continue;
    signals.Add(variable.line, signals ? "" : declarations.ShortPathOf(variable));
  }
  return signals;
}

/// More than one in a hundred; none for a signal without changes.
bool IsOftenUnknown(const CodeAccount& code) {
  const auto unknown = static_cast<double>(code.unknown);
  return unknown > kUnknownShare * (unknown + static_cast<double>(code.counted));
}

/// What values say of the simulation.
void FindInValues(const Declarations& declarations, const BodyAccount& body, Findings& findings) {
  findings.Add(FindingKind::Unknown, Signals(declarations, body, IsOftenUnknown));
  findings.Add(FindingKind::StaysUnknown, Signals(declarations, body, [](const CodeAccount& code) {
                 return !code.Is(CodeAccount::kHasOtherThanX);  // also where it is given no value
               }));
  findings.Add(FindingKind::TurnsUnknown, Signals(declarations, body, [](const CodeAccount& code) {
                 return code.Is(CodeAccount::kTurnsX);
               }));
  findings.Add(FindingKind::UnknownBits, body.unknownBits);
  if (body.dumping.OffTicks() == 0) return;
  Tally off = body.offStretches;
  // In place of an example: how much of the span, and the repeats.
  off.example = OffText(body.dumping, body.facts.lastTick - body.facts.firstTick, body.repeated);
  findings.Add(FindingKind::DumpingOff, off);
}

/// All that one reading of a dump shows. The order of the parts does not matter, since Sorted puts
/// findings in theirs.
DumpCheck Finish(Declarations declarations, const BodyAccount& body, const ItemTallies& items,
                 Findings findings) {
  FindInDeclarations(declarations, findings);
  FindInNames(declarations, findings);
  FindInItems(items, findings);
  FindInLines(declarations, body, items, findings);
  FindInStamps(body, findings);
  FindInValues(declarations, body, findings);
  return {std::move(declarations), body.facts, std::move(findings).Sorted()};
}

/// The account of what comes before the body, to which the body's is added. Stamps of the body may
/// go on with digits of the declarations' second words.
BodyAccount AccountOf(const SlotWatch& declarations) {
  BodyAccount account;
  account.slots = declarations;
  return account;
}

}  // namespace

DumpCheck CheckDump(ByteSource& in, const std::string& name, std::string_view packing,
                    std::size_t block) {
  // The watch has to see the words of the declarations as well: their second words pass through the
  // slot.
  DumpWords words(in, block, block / 4);
  SlotWatch watch;
  words.Show(watch);
  Declarations declarations = ReadDeclarations(words, name);
  BodyAccount body = AccountOf(watch);
  DumpItems items(words, declarations);
  BodyCheck check(declarations.codes.size(), watch.Next());
  ReadBody(items, check);
  body.Join(check.TakeAccount());
  // Hosts read the packed bytes, and nothing of the dump.
  Findings findings;
  findings.Add(FindingKind::Packed, !packing.empty(), 0, packing);
  return Finish(std::move(declarations), body, items.tallies(), std::move(findings));
}

DumpCheck CheckDump(ByteFile& file, const std::string& name, unsigned jobs, std::size_t block) {
  FileDump dump(file, block);
  SlotWatch watch;
  dump.words().Show(watch);
  Declarations declarations = ReadDeclarations(dump.words(), name);
  const std::uint32_t codes = declarations.codes.size();
  BodyAccount body = AccountOf(watch);
  // Each check begins with empty slots, which the account before fills in when it joins.
  const auto make = [&] { return std::make_unique<BodyCheck>(codes, watch.Next()); };
  const auto take = [&](const std::unique_ptr<BodyCheck> check) {
    body.Join(check->TakeAccount());
  };
  // The figures of all codes are kept once for each thread.
  const auto stretches = dump.Cut(ThreadsWithin(sizeof(CodeAccount) * codes, jobs));
  const ItemTallies items = ReadInParts(dump, declarations, stretches, make, take);
  return Finish(std::move(declarations), body, items, {});
}

}  // namespace orsa::kesncd
