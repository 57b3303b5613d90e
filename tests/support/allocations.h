// The allocations of all that is linked statically, the library's objects among it: they are
// counted, and one of them can be made to fail.
#ifndef KESNCD_TESTS_SUPPORT_ALLOCATIONS_H_
#define KESNCD_TESTS_SUPPORT_ALLOCATIONS_H_

namespace orsa::kesncd {

struct Allocations {
  long made = 0;     // malloc, calloc, realloc, new
  long held = 0;     // and not freed
  long failing = 0;  // fails when `made` reaches it
};
extern Allocations allocations;

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_ALLOCATIONS_H_
