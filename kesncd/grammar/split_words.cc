// The free splitters, whose arrays and strings the caller releases with free().
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "kesncd/kesncd.h"

namespace orsa::kesncd {

namespace {

/// Zeros, so that every string is terminated from the start.
template <class T>
T* Allocate(std::size_t count) {
  void* memory = std::calloc(count, sizeof(T));
  if (memory == nullptr) throw std::bad_alloc();
  return static_cast<T*>(memory);
}

/// An array of strings that doubles when it is full and frees itself until it is handed out. Add
/// strings, then HandOut once. Until then an exception releases all of it.
class StringArray {
 public:
  explicit StringArray(std::size_t capacity)
      : strings_(Allocate<char*>(capacity)), capacity_(capacity) {}
  // Only what was not handed out.
  ~StringArray() {
    for (std::size_t i = 0; i < size_; ++i) std::free(strings_[i]);
    std::free(strings_);
  }
  StringArray(const StringArray&) = delete;
  StringArray& operator=(const StringArray&) = delete;

  /// Appends an empty string with room for `length` characters. The caller fills it; the terminator
  /// is there.
  char* Add(std::size_t length) {
    if (size_ == capacity_) Double();
    strings_[size_] = Allocate<char>(length + 1);
    return strings_[size_++];
  }

  // The array is never null, also without strings.
  char** HandOut(int* count) {
    *count = static_cast<int>(size_);
    size_ = 0;
    return std::exchange(strings_, nullptr);
  }

 private:
  // The new array first: where there is no memory, the old one stays.
  void Double() {
    char** doubled = Allocate<char*>(2 * capacity_);
    std::memcpy(doubled, strings_, size_ * sizeof *strings_);
    std::free(strings_);
    strings_ = doubled;
    capacity_ *= 2;
  }

  // The array and its strings are owned until they are handed out.
  char** strings_;
  std::size_t capacity_;
  std::size_t size_ = 0;
};

/// ASCII only, whatever the locale.
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// For memory of calloc.
struct Free {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

char** GetArrayOfNumbersAndLetters(const char* text, int* count) {
  constexpr std::size_t kFirstPieces = 3;
  *count = 0;
  StringArray pieces(kFirstPieces);
  // No piece is longer than the text.
  const std::size_t length = std::strlen(text);
  char* end = nullptr;  // of the current piece
  for (const char* c = text; *c != '\0'; ++c) {
    if (!IsDigit(*c) && !IsLetter(*c)) continue;
    // A piece ends where digits and letters meet, not at what stands between: "1.5ns" is "15" and
    // "ns".
    if (end == nullptr || IsDigit(*c) != IsDigit(end[-1])) end = pieces.Add(length);
    *end++ = *c;
  }
  return pieces.HandOut(count);
}

char** GetArrayOfTokens(const char* text, const char* delims, int* count) {
  constexpr std::size_t kFirstTokens = 10;
  *count = 0;
  StringArray tokens(kFirstTokens);
  // strtok_r writes into what it cuts.
  const std::size_t bytes = std::strlen(text) + 1;
  const std::unique_ptr<char, Free> copy(Allocate<char>(bytes));
  std::memcpy(copy.get(), text, bytes);
  char* rest = nullptr;
  for (char* token = strtok_r(copy.get(), delims, &rest); token != nullptr;
       token = strtok_r(nullptr, delims, &rest)) {
    std::size_t length = std::strlen(token);
    // As with Mem, a newline is the line's end and not the word's.
    if (token[length - 1] == '\n') --length;
    std::memcpy(tokens.Add(length), token, length);
  }
  return tokens.HandOut(count);
}

}  // namespace orsa::kesncd
