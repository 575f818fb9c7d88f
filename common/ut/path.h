// path.h: directories and the names in them.
#ifndef COMMON_UT_PATH_H
#define COMMON_UT_PATH_H

#include <cstring>
#include <string>
#include <string_view>

namespace ut {

// The text that must follow a directory before a name in it: a slash, or nothing when the directory
// ends in one.
constexpr const char* slashAfter(std::string_view directory) {
  return directory.ends_with('/') ? "" : "/";
}

// The path of `name` in `directory`. Throws std::bad_alloc.
inline std::string pathIn(std::string_view directory, std::string_view name) {
  return std::string(directory).append(slashAfter(directory)).append(name);
}

// Removes the slashes at the end of a path, in place; one slash alone is the root and is kept.
inline void dropTrailingSlashes(char* path) {
  for (std::size_t length = std::strlen(path); length > 1 && path[length - 1] == '/'; --length) {
    path[length - 1] = '\0';
  }
}

}  // namespace ut

#endif  // COMMON_UT_PATH_H
