// The allocations of the library's objects and of everything else that is linked statically: they
// are counted, and one of them can be made to fail.
#ifndef KESNCD_TESTS_ALLOCATIONS_H_
#define KESNCD_TESTS_ALLOCATIONS_H_

namespace orsa::kesncd {

struct Allocations {
  long made = 0;     // malloc, calloc, realloc, new
  long held = 0;     // and not freed
  long failing = 0;  // fails when `made` reaches it
};
extern Allocations allocations;

/// Makes the n-th allocation from now on fail while the object lives.
class FailingAllocation {
 public:
  explicit FailingAllocation(long n) { allocations.failing = allocations.made + n; }
  ~FailingAllocation() { allocations.failing = 0; }
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  bool WasReached() const { return allocations.made >= allocations.failing; }
};

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_ALLOCATIONS_H_
