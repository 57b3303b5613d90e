// The text of a module's activity, and the file of it that stands beside a dump.
#ifndef KESNCD_MODEL_ACTIVITY_FILE_H_
#define KESNCD_MODEL_ACTIVITY_FILE_H_

#include <cstdio>
#include <string>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

/// Writes "module | NAME" and a line "signal | NAME | MHZ" for each signal. False when not all of
/// it could be written.
bool WriteActivity(const Vmod& module, std::FILE* file);

/// Puts the activity into the file at `path`. A file that is there is replaced by a complete one or
/// stays: the new one is written beside it first. Devices and links are written to directly, and so
/// is a file in a folder that takes no further one.
void ReplaceActivityFile(const Vmod& module, const std::string& path);

}  // namespace orsa::kesncd

#endif  // KESNCD_MODEL_ACTIVITY_FILE_H_
