// Whether the address sanitizer is active: it handles failed allocations itself.
#ifndef ORVA_TESTS_SUPPORT_SANITIZER_H
#define ORVA_TESTS_SUPPORT_SANITIZER_H

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVA_ADDRESS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define ORVA_ADDRESS_SANITIZER
#endif

namespace orva::test {

#if defined(ORVA_ADDRESS_SANITIZER)
inline constexpr bool addressSanitizer = true;
#else
inline constexpr bool addressSanitizer = false;
#endif

}  // namespace orva::test

#endif
