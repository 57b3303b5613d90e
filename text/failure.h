// Why a piece of work could not be done. What reads and writes throws a Failure; the program turns
// it into a message and an exit status.
#ifndef KESNCD_TEXT_FAILURE_H_
#define KESNCD_TEXT_FAILURE_H_

#include <stdexcept>
#include <string>

namespace orsa::kesncd {

/// Each kind is an exit status of the program, so that a script can tell them apart without reading
/// the message.
enum class FailureKind {
  NothingMatched,  // nothing of what was asked for is in the input
  Unusable,        // wrong use, or an input that cannot be read
  OutputFailed,    // the result could not be written
  ReaderGone,      // who read the result through a pipe wants no more of it
};

/// The text, which may have several lines, is what the user reads. A Failure ends the work at hand;
/// what was written of a result by then is taken back by its owner (see WholeFile).
class Failure : public std::runtime_error {
 public:
  Failure(FailureKind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
  FailureKind kind() const { return kind_; }

 private:
  FailureKind kind_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_FAILURE_H_
