// How much longer things may take in this build than in the one that users get.
#pragma once

namespace wavo::testing {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int kSlowness = 5;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr int kSlowness = 5;
#else
inline constexpr int kSlowness = 1;
#endif
#else
inline constexpr int kSlowness = 1;
#endif

}  // namespace wavo::testing
