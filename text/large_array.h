// Arrays of which a dump's changes reach an element each, in no order: of a million signals every
// change waits for memory, and in pages of the usual size for the page's place as well.
#ifndef KESNCD_TEXT_LARGE_ARRAY_H_
#define KESNCD_TEXT_LARGE_ARRAY_H_

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace orsa::kesncd {

inline constexpr std::size_t kLargePage = std::size_t{1} << 21U;  // of x86-64 and most others

/// Asks for large pages where `bytes` at `memory` hold whole ones. Advice that a system may not
/// take: nothing but time is lost then.
inline void AskForLargePages(void* memory, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  void* begin = memory;
  if (std::align(kLargePage, kLargePage, begin, bytes) != nullptr) {
    (void)madvise(begin, bytes / kLargePage * kLargePage, MADV_HUGEPAGE);
  }
#else
  (void)memory, (void)bytes;
#endif
}

/// Memory as the usual allocator gives it, but large blocks ask the system for large pages.
template <class T>
struct LargePages {
  using value_type = T;

  LargePages() = default;
  template <class Other>
  LargePages(const LargePages<Other>& /*other*/) {}  // NOLINT(google-explicit-constructor)

  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / 2 / sizeof(T)) throw std::bad_alloc();
    const std::size_t bytes = count * sizeof(T);
    if (bytes < kWorthIt) {
      return static_cast<T*>(::operator new (bytes, std::align_val_t{alignof(T)}));
    }
    const std::size_t whole = (bytes + kLargePage - 1) / kLargePage * kLargePage;
    void* const memory = std::aligned_alloc(kLargePage, whole);
    if (memory == nullptr) throw std::bad_alloc();
    AskForLargePages(memory, whole);
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t count) {
    if (count * sizeof(T) < kWorthIt) {
      ::operator delete (memory, std::align_val_t{alignof(T)});
    } else {
      std::free(memory);
    }
  }

  bool operator==(const LargePages& /*other*/) const { return true; }

 private:
  // Four pages: the last one may be used in part only.
  static constexpr std::size_t kWorthIt = 4 * kLargePage;
};

template <class T>
using LargeArray = std::vector<T, LargePages<T>>;

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_LARGE_ARRAY_H_
