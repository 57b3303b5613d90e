// The public line splitter: the splitter of text/ with its fields shown as hosts have always seen
// them.
#include "kesncd/kesncd.h"
#include "text/splitter.h"

namespace orsa::kesncd {

namespace {

/// Shows the splitter's fields when a call ends, also by an exception. Made at the start of each
/// operation, so that its destructor runs when the splitter is done.
class Shown {
 public:
  Shown(Mem& mem, const Splitter& splitter) : mem_(mem), splitter_(splitter) {}
  ~Shown() {
    mem_.slotCount = splitter_.slotCount();
    mem_.slotLength = splitter_.slotLength();
    mem_.slots = splitter_.slots();
    mem_.workBuffer = splitter_.workBuffer();
  }
  Shown(const Shown&) = delete;
  Shown& operator=(const Shown&) = delete;

 private:
  Mem& mem_;
  const Splitter& splitter_;
};

}  // namespace

/// The fields are public data, so they are set before anybody can look.
Mem::Mem() : splitter_(new Splitter) {
  const Shown shown(*this, *splitter_);
}

Mem::~Mem() {
  delete splitter_;
}

char** Mem::GetArrayOfTokens(const char* line, const char* delims, int* count) {
  const Shown shown(*this, *splitter_);
  return splitter_->CutWords(line, delims, count);
}

char** Mem::GetArrayOfPieces(const char* text, int* count) {
  const Shown shown(*this, *splitter_);
  return splitter_->CutPieces(text, count);
}

}  // namespace orsa::kesncd
