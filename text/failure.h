// Why a piece of work could not be done. What reads and writes throws a Failure; the program turns
// it into a message and an exit status.
#ifndef KESNCD_TEXT_FAILURE_H_
#define KESNCD_TEXT_FAILURE_H_

#include <stdexcept>
#include <string>

namespace orsa::kesncd {

enum class FailureKind {
  NothingMatched,  // nothing of what was asked for is in the input
  Unusable,        // wrong use, or an input that cannot be read
  OutputFailed,    // the result could not be written
  ReaderGone,      // who read the result through a pipe wants no more of it
};

/// The text, which may have several lines, is what the user reads.
class Failure : public std::runtime_error {
 public:
  Failure(FailureKind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
  FailureKind kind() const { return kind_; }

 private:
  FailureKind kind_;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_FAILURE_H_
