// The text of a module's activity, and the file of it that stands beside a dump.
#ifndef KESNCD_MODEL_ACTIVITY_FILE_H_
#define KESNCD_MODEL_ACTIVITY_FILE_H_

#include <string>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Appends the activity to the file at `path`, if it can be opened. The file is made where there is
/// none. An error shows nowhere: the operation of hosts has no result.
void AppendActivity(const Vmod& module, const std::string& path);

/// Puts the activity into the file at `path`. The new text is written beside it and renamed, so
/// that nobody reads half of it. Where that cannot be done (a folder that takes no file, a file
/// that cannot be renamed over, a disk with room for one of the two only), and for links and
/// devices, the file itself is opened and written. A place that takes nothing is passed over, also
/// one whose reader never comes. A run writes it beside its dump; an error shows nowhere here, too.
void ReplaceActivityFile(const Vmod& module, const std::string& path);

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_ACTIVITY_FILE_H_
