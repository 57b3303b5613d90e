// What a counter keeps of each code, in memory of its own or beside what other counters keep.
//
// In a large design every change waits for the memory of its code. Where several counters take the
// same changes, what all of them keep of a code lies in one cache line, so that a change waits once
// and not once for each of them.
#ifndef KESNCD_ACTIVITY_CODE_ARRAY_H_
#define KESNCD_ACTIVITY_CODE_ARRAY_H_

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "text/large_array.h"

namespace orsa::kesncd {

/// A cache line for each code, to be shared out among counters.
class CodeLines {
 public:
  static constexpr std::size_t kBytes = 64;

  explicit CodeLines(std::size_t codes) : lines_(codes) {}

  /// Where in the first line `bytes` are that nobody else gets; in the others they are at the same
  /// place. Null where the lines are full.
  std::byte* Take(std::size_t bytes, std::size_t alignment) {
    const std::size_t begin = (taken_ + alignment - 1) / alignment * alignment;
    if (begin + bytes > kBytes || lines_.empty()) return nullptr;
    taken_ = begin + bytes;
    return lines_.front().bytes.data() + begin;
  }

 private:
  struct alignas(kBytes) Line {
    std::array<std::byte, kBytes> bytes{};
  };

  LargeArray<Line> lines_;
  std::size_t taken_ = 0;  // of each line
};

/// A T for each code, by number.
template <class T>
class CodeArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  /// In `lines`, unless they are null or full. They stay as long as an array is in them.
  CodeArray(std::size_t codes, std::shared_ptr<CodeLines> lines)
      : lines_(std::move(lines)),
        size_(codes),
        first_(lines_ != nullptr ? lines_->Take(sizeof(T), alignof(T)) : nullptr),
        stride_(CodeLines::kBytes) {
    if (first_ == nullptr) {
      Own(LargeArray<T>(codes));
    } else {
      for (std::size_t codeId = 0; codeId < size_; ++codeId) new (At(codeId)) T();
    }
  }
  /// Of memory that is there.
  explicit CodeArray(LargeArray<T> own) { Own(std::move(own)); }
  CodeArray(const CodeArray&) = delete;
  CodeArray& operator=(const CodeArray&) = delete;

  T& operator[](std::size_t codeId) { return *At(codeId); }
  const T& operator[](std::size_t codeId) const { return *At(codeId); }
  std::size_t size() const { return size_; }

  /// All elements in memory of their own. The array is used up.
  LargeArray<T> Take() {
    if (!own_.empty()) return std::move(own_);
    LargeArray<T> taken(size_);
    for (std::size_t codeId = 0; codeId < size_; ++codeId) taken[codeId] = *At(codeId);
    return taken;
  }

 private:
  void Own(LargeArray<T> own) {
    own_ = std::move(own);
    size_ = own_.size();
    first_ = reinterpret_cast<std::byte*>(own_.data());
    stride_ = sizeof(T);
  }
  T* At(std::size_t codeId) const { return reinterpret_cast<T*>(first_ + codeId * stride_); }

  std::shared_ptr<CodeLines> lines_;
  LargeArray<T> own_;
  std::size_t size_ = 0;
  std::byte* first_ = nullptr;
  std::size_t stride_ = 0;  // bytes from one element to the next
};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_CODE_ARRAY_H_
