// How much of their random work tests leave out under a sanitizer, which makes each reading of a
// dump several times as dear and finds in some hundred of them what it would find in more.
#ifndef KESNCD_TESTS_SUPPORT_SANITIZER_SHARE_H_
#define KESNCD_TESTS_SUPPORT_SANITIZER_SHARE_H_

namespace orsa::kesncd {

#ifdef __SANITIZE_ADDRESS__
inline constexpr int kSanitizerShare = 5;
#else
inline constexpr int kSanitizerShare = 1;
#endif

}  // namespace orsa::kesncd

#endif  // KESNCD_TESTS_SUPPORT_SANITIZER_SHARE_H_
