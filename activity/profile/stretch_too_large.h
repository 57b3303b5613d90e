// Where stretches of a dump cannot be added up, and one thread has to read all of it.
#ifndef KESNCD_ACTIVITY_PROFILE_STRETCH_TOO_LARGE_H_
#define KESNCD_ACTIVITY_PROFILE_STRETCH_TOO_LARGE_H_

namespace orsa::kesncd {

/// Thrown by a taker of a stretch that needs more room than it has. That is no Failure: the stretch
/// may hold what is no part of the dump, such as a long comment, or fit into the room of one
/// reading.
struct StretchTooLarge {};

}  // namespace orsa::kesncd

#endif  // KESNCD_ACTIVITY_PROFILE_STRETCH_TOO_LARGE_H_
