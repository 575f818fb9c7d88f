// result.h: dropping a result on purpose.
#ifndef COMMON_UT_RESULT_H
#define COMMON_UT_RESULT_H

namespace ut {

// Does nothing with `result`. The only way to call a [[nodiscard]] function for its effect alone:
// `reason` tells the reader of the call why its result does not matter there.
template <typename T>
void ignoreResult([[maybe_unused]] const T& result, [[maybe_unused]] const char* reason) {}

}  // namespace ut

#endif  // COMMON_UT_RESULT_H
