// sanitized.h: VEXO_ADDRESS_SANITIZER is defined in a build under the address sanitizer.
#ifndef COMMON_UT_SANITIZED_H
#define COMMON_UT_SANITIZED_H

#if defined(__SANITIZE_ADDRESS__)
#define VEXO_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXO_ADDRESS_SANITIZER 1
#endif
#endif

#endif  // COMMON_UT_SANITIZED_H
