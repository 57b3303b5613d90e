// What an activity database holds: the figures of one dump of both kinds, and whence they come.
#ifndef KESNCD_DATABASE_STORED_RUN_H_
#define KESNCD_DATABASE_STORED_RUN_H_

#include <cstdint>
#include <optional>
#include <string>

#include "activity/activity_result.h"
#include "activity/body_part.h"
#include "activity/host_run.h"
#include "activity/profile/profile.h"
#include "activity/profile/profile_part.h"
#include "free_format/prepare/prepare.h"

namespace orsa::kesncd {

/// What a database says of itself, in its table `run`.
struct StoredFacts {
  std::string dump;  // what it was called when it was counted
  // For who looks at the file; no figure depends on it.
  std::string program;                     // the version of the program that counted
  TimeWindow window;                       // that was counted
  std::uint64_t runs = 1;                  // more than one: dumps of one design, merged
  bool hasHost = true;                     // false: without figures by the hosts' rule
  bool hasProfile = false;                 // of a file that is read: it has one
  std::optional<PartChoice> part;          // of the dump, if it is not the whole
  std::uint64_t dumpBytes = 0;             // of a part's dump
  std::optional<PartWindows> partWindows;  // of a part that is read, if it was counted over time
  std::uint64_t dumpSample = 0;            // the same for the same dump, wherever it is
};

/// Figures by code and bit, with the declarations that give them names.
struct StoredRun {
  StoredFacts facts;
  ActivityResult exact;
  HostRun host;  // its declarations are those of `exact`
  /// Of a part of a dump all that was counted; nothing else has figures then but the declarations,
  /// the first bits of codes and what was passed over.
  BodyPart part;
  /// When modules toggled; nothing where that was not counted, or the run is merged.
  std::optional<KeptProfile> profile;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_DATABASE_STORED_RUN_H_
