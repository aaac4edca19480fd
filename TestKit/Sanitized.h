#pragma once

namespace zqcore::testkit {

/// Whether a sanitizer of memory or threads watches this program. It takes the fatal signals and the end of
/// the process for itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace zqcore::testkit
