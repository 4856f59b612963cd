// Whether the tests are built with AddressSanitizer, which maps more memory than any limit has.
#pragma once

namespace bgp_test {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace bgp_test
