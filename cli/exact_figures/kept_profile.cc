// What a database holds over time, and what it does not.
//
// A database keeps sums of windows, not the changes that they were made of. So it answers for the
// windows that it was made with, for any scope and depth; other windows need the dump.
#include "cli/exact_figures/kept_profile.h"

#include "text/failure.h"
#include "vcd/time_text.h"

namespace orsa::kesncd::cli {

namespace {

/// Says why there is no profile, as far as the facts tell: one run may have been merged too, from
/// the parts of one dump.
[[noreturn]] void FailWithout(const StoredFacts& facts, const std::string& name) {
  const std::string why = facts.runs > 1
                              ? "it was merged from several runs, whose times are not the same"
                              : "it was made with --no-profile, by an earlier version, or from "
                                "parts of a dump whose windows they could not know; "
                                "kesncd activity DUMP -o FILE makes one that does";
  throw Failure(FailureKind::Unusable, name + ": holds no figures over time: " + why);
}

}  // namespace

// For a message: what is held beside what is asked for, in the same words.
std::string WindowsText(std::uint64_t parts, const std::optional<std::uint64_t>& length) {
  if (length) return "windows of " + TimeText(*length);
  return std::to_string(parts) + " equal parts of the span";
}

/// A length is compared in femtoseconds, so that 1us and 1000ns are the same. Equal parts are
/// compared by their number: of the same dump they are the same windows.
StoredRun ReadWithProfile(ActivityDatabase& database, const std::string& name,
                          const WindowsAsked& asked) {
  StoredRun run = database.ReadAll();
  if (!run.profile) FailWithout(run.facts, name);
  const KeptProfile& kept = *run.profile;
  const bool isHeld = asked.length ? asked.length == kept.length : asked.parts == kept.parts;
  if (asked.IsAny() || isHeld) return run;
  throw Failure(FailureKind::Unusable, name + ": holds " + WindowsText(kept.parts, kept.length) +
                                           ", not " + WindowsText(asked.parts, asked.length) +
                                           ", which need the dump");
}

/// The database has a row for each scope of the dump, with all below it, so a module's row is that
/// of its scope; nothing has to be added up. `own` stays empty: such sums are of all modules only.
Profile ProfileIn(const Profile& all, const Declarations& declarations, std::uint32_t scope,
                  std::uint32_t depth) {
  Profile profile;
  profile.edges = all.edges;
  profile.observed = all.observed;
  profile.gaps = all.gaps;
  profile.isFolded = all.isFolded;
  profile.modules = ModulesIn(declarations, scope, depth);
  for (const std::uint32_t module : profile.modules.scopes) {
    profile.toggles.push_back(all.toggles[all.modules.places[module]]);
  }
  return profile;
}

}  // namespace orsa::kesncd::cli
