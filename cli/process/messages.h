// What the program says beside its result, on standard error.
#ifndef KESNCD_CLI_PROCESS_MESSAGES_H_
#define KESNCD_CLI_PROCESS_MESSAGES_H_

#include <string>

namespace orsa::kesncd::cli {

/// Writes "kesncd: SUBJECT: text" for each line of the text: why a run has no result, or what ended
/// it. What a terminal must not see is replaced.
void Say(const std::string& subject, const std::string& text);

/// The same for what is worth knowing about a result; --quiet silences it.
void Remark(const std::string& subject, const std::string& text);

/// From now on there are no remarks.
void SilenceRemarks();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_MESSAGES_H_
