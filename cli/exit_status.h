// How the program ends.
#ifndef KESNCD_CLI_EXIT_STATUS_H_
#define KESNCD_CLI_EXIT_STATUS_H_

#include <stdexcept>
#include <string>

namespace kesncd_cli {

enum class ExitStatus {
  Done = 0,
  NothingMatched = 1,  // the work was done, but nothing of what was asked for is in the input
  Findings = 1,        // of `check`
  Unusable = 2,        // wrong use, or an input that cannot be read
  OutputFailed = 3,    // the result could not be written
};

/// Ends the program with a status; the text, which may have several lines, is what the user reads.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& text) : std::runtime_error(text), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

/// Writes "kesncd: SUBJECT: text" to standard error, for each line of the text.
void Say(const std::string& subject, const std::string& text);

}  // namespace kesncd_cli

#endif  // KESNCD_CLI_EXIT_STATUS_H_
