// Arrays of which a dump's changes reach an element each, in no order: of a million signals every
// change waits for memory, and in pages of the usual size for the page's place as well.
#ifndef KESNCD_TEXT_LARGE_ARRAY_H_
#define KESNCD_TEXT_LARGE_ARRAY_H_

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <cstddef>
#include <cstdint>
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

/// `bytes`, a multiple of a large page, at the begin of one; null where there is no memory. Always
/// fresh from the system: memory that a program has used before is in small pages and stays there.
inline void* NewLargePages(std::size_t bytes) {
#ifdef __linux__
  // A large page more, since the system aligns to small ones only; what lies around is given back.
  void* const mapped =
      mmap(nullptr, bytes + kLargePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) return nullptr;
  const auto past = reinterpret_cast<std::uintptr_t>(mapped) % kLargePage;
  char* const memory = static_cast<char*>(mapped) + (kLargePage - past);
  (void)munmap(mapped, kLargePage - past);
  if (past > 0) (void)munmap(memory + bytes, past);
  AskForLargePages(memory, bytes);
  return memory;
#else
  return std::aligned_alloc(kLargePage, bytes);
#endif
}

/// Gives back what NewLargePages gave.
inline void DropLargePages(void* memory, std::size_t bytes) {
#ifdef __linux__
  (void)munmap(memory, bytes);
#else
  (void)bytes;
  std::free(memory);
#endif
}

/// Memory as the usual allocator gives it, but large blocks are in large pages.
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
    void* const memory = NewLargePages(WholePages(bytes));
    if (memory == nullptr) throw std::bad_alloc();
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t count) {
    const std::size_t bytes = count * sizeof(T);
    if (bytes < kWorthIt) {
      ::operator delete (memory, std::align_val_t{alignof(T)});
    } else {
      DropLargePages(memory, WholePages(bytes));
    }
  }

  bool operator==(const LargePages& /*other*/) const { return true; }

 private:
  // Two pages: the last one may be used in part only.
  static constexpr std::size_t kWorthIt = 2 * kLargePage;

  static std::size_t WholePages(std::size_t bytes) {
    return (bytes + kLargePage - 1) / kLargePage * kLargePage;
  }
};

template <class T>
using LargeArray = std::vector<T, LargePages<T>>;

}  // namespace orsa::kesncd

#endif  // KESNCD_TEXT_LARGE_ARRAY_H_
