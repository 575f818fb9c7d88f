// sanitized.h: what a build under the address sanitizer does differently; VEXO_ADDRESS_SANITIZER is
// defined there.
#ifndef COMMON_UT_SANITIZED_H
#define COMMON_UT_SANITIZED_H

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VEXO_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXO_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(VEXO_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace ut {

#if defined(VEXO_ADDRESS_SANITIZER)

inline constexpr bool kSanitized = true;

// For an allocator: the sanitizer reports an access to these bytes, or no longer does. It never
// forbids a byte outside of them; where they do not fill a unit of 8, it may forbid too few.
inline void forbidAccess(const void* start, std::size_t size) {
  ASAN_POISON_MEMORY_REGION(start, size);
}
inline void allowAccess(const void* start, std::size_t size) {
  ASAN_UNPOISON_MEMORY_REGION(start, size);
}

#else

inline constexpr bool kSanitized = false;
inline void forbidAccess(const void*, std::size_t) {}
inline void allowAccess(const void*, std::size_t) {}

#endif

}  // namespace ut

#endif  // COMMON_UT_SANITIZED_H
