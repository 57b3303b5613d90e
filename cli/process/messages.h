// What the program says beside its result, on standard error.
//
// Two kinds: what the user must read because there is no result, or not the usual one (Say), and
// what is good to know about a result (Remark), which --quiet leaves out. All have one form, so
// that scripts can tell them from a result that goes to the same terminal:
//
//   kesncd: sim.vcd: no scope sco; did you mean tb/soc?
#ifndef KESNCD_CLI_PROCESS_MESSAGES_H_
#define KESNCD_CLI_PROCESS_MESSAGES_H_

#include <string>

namespace orsa::kesncd::cli {

/// Writes "kesncd: SUBJECT: text" for each line of the text: why a run has no result, or what ended
/// it. What a terminal must not see is replaced. `subject` is the dump, file or option that it is
/// about; empty for none ("kesncd: text"). May be called from any thread.
void Say(const std::string& subject, const std::string& text);

/// The same for what is worth knowing about a result; --quiet silences it. The same form: a reader
/// cannot tell the two apart, and need not.
void Remark(const std::string& subject, const std::string& text);

/// From now on there are no remarks. There is no way back: --quiet holds for a whole run.
void SilenceRemarks();

}  // namespace orsa::kesncd::cli

#endif  // KESNCD_CLI_PROCESS_MESSAGES_H_
