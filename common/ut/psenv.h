// psenv.h: reading the environment into fixed-size texts.
#ifndef COMMON_UT_PSENV_H
#define COMMON_UT_PSENV_H

#include <cstddef>

// Copies the value of the environment variable `name` into `value` and returns 1 when the variable
// is set, not empty and shorter than `size`. Otherwise `value` becomes empty and 0 is returned. A
// value that is too long counts as absent; it is never cut.
[[nodiscard]] int psGetEnvVariable(const char* name, char* value, std::size_t size);

#endif  // COMMON_UT_PSENV_H
