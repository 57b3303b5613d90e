// Counts what is allocated, and lets an allocation fail when a test says so.
#include "tests/support/allocations.h"

#include <cstdlib>
#include <new>

orsa::kesncd::Allocations orsa::kesncd::allocations;
using orsa::kesncd::allocations;

namespace {

bool Fails() {
  return ++allocations.made == allocations.failing;
}
void* Counted(void* memory) {
  allocations.held += memory != nullptr ? 1 : 0;
  return memory;
}

}  // namespace

// The linker puts these in the place of the C library's (see CMakeLists.txt).
extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_realloc(void* memory, std::size_t bytes);
void __real_free(void* memory);

void* __wrap_malloc(std::size_t bytes) {
  return Fails() ? nullptr : Counted(__real_malloc(bytes));
}
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
  return Fails() ? nullptr : Counted(__real_calloc(count, bytes));
}
void* __wrap_realloc(void* memory, std::size_t bytes) {
  if (Fails()) return nullptr;
  return memory == nullptr ? Counted(__real_realloc(memory, bytes)) : __real_realloc(memory, bytes);
}
void __wrap_free(void* memory) {
  auto* const freed = allocations.freed;
  if (freed != nullptr && freed->size() < freed->capacity()) freed->push_back(memory);
  allocations.held -= memory != nullptr ? 1 : 0;
  __real_free(memory);
}
}

// Out of line, so that the compiler sees no mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
  void* const memory = std::malloc(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
  std::free(memory);
}
