// Whether the address sanitizer watches: it answers an allocation that fails itself.
#ifndef ORVA_TESTS_SUPPORT_SANITIZER_H
#define ORVA_TESTS_SUPPORT_SANITIZER_H

namespace orva_test {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool addressSanitizer = true;
#elif defined(__has_feature)
inline constexpr bool addressSanitizer = __has_feature(address_sanitizer);
#else
inline constexpr bool addressSanitizer = false;
#endif

}  // namespace orva_test

#endif
