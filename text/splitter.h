// The line splitter of the line readers: cuts a line into words, and a word into runs of digits,
// letters and other characters.
//
// Hosts see it as the public class Mem, whose fields have habits that readers of dumps depend on,
// first of all the stamp tail: a piece is copied into a reused slot without a terminator, so that
// after the stamp "#1000" the stamp "#5" reads 5000.
#ifndef KESNCD_TEXT_SPLITTER_H_
#define KESNCD_TEXT_SPLITTER_H_

#include <cstddef>

namespace orsa::kesncd {

/// Reused for line after line. The array that a call returns is valid until the next call. Growth
/// throws std::bad_alloc; the object stays usable then. The slots are shared by words and pieces
/// where a reader uses one splitter for both, so a stamp can show the tail of a word as well.
class Splitter {
 public:
  Splitter();
  ~Splitter();
  Splitter(const Splitter&) = delete;
  Splitter& operator=(const Splitter&) = delete;

  /// Cuts `line` at the characters of `delims`; see Mem::GetArrayOfTokens for what the slots hold.
  char** CutWords(const char* line, const char* delims, int* count);
  /// Cuts `text` into runs of one class of characters; see Mem::GetArrayOfPieces.
  char** CutPieces(const char* text, int* count);

  // The sizes as they are reported, which follow rules of their own.
  int slotCount() const { return slotCount_; }
  int slotLength() const { return slotLength_; }
  char** slots() const { return slots_; }
  char* workBuffer() const { return workBuffer_; }

  /// Characters that each slot has room for from the start. Callers that write so many into one of
  /// the first two slots themselves need not say so.
  static constexpr std::size_t kLeastRoom = 256;

 private:
  void Release();
  void HoldLine(const char* line, std::size_t length);
  void HoldText(const char* text, std::size_t length);
  void HoldSlots(std::size_t count);
  void HoldBytes(std::size_t bytes);
  void DoubleSlots();
  void Store(std::size_t slot, const char* text, std::size_t bytes);
  void ClearSlot(std::size_t slot, std::size_t from);
  void KeepStrings();

  // The sizes that Mem shows; how much memory there is, the held fields below say.
  int slotCount_;
  int slotLength_;
  // All slots are owned: heldSlots_ strings of heldBytes_ bytes each.
  char** slots_ = nullptr;
  // The owned copy of the line while its words are cut.
  char* workBuffer_ = nullptr;
  std::size_t heldSlots_ = 0;       // slots that exist
  std::size_t heldBytes_;           // bytes of every one of them
  std::size_t* written_ = nullptr;  // bytes of each that may not be zero
  std::size_t stored_;              // slots that may have changed since KeepStrings
  std::size_t workBytes_ = 0;       // bytes of workBuffer_
  char* text_ = nullptr;            // copy of the text being cut into pieces
  std::size_t textBytes_ = 0;
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_SPLITTER_H_
