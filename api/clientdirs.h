// clientdirs.h: where the storage client's files are, from the environment or as installed.
//
// Each returns 0, or 1702 if the text does not fit into `size` bytes; `out` is then empty.
#ifndef API_CLIENTDIRS_H
#define API_CLIENTDIRS_H

#include <cstddef>

// The library's directory: VLTI_DIR with a "/" at its end, else the installed one without.
[[nodiscard]] unsigned short psGetMARLAPIDir(char* out, std::size_t size);

// The directory of the library's error log: VLTI_LOG with a "/" at its end, else the agent's
// directory without.
[[nodiscard]] unsigned short psGetMARLAPILog(char* out, std::size_t size);

// The client options file: VLTI_CONFIG, else vlt.opt in the agent's directory.
[[nodiscard]] unsigned short psGetMARLAPIConfig(char* out, std::size_t size);

namespace api {

inline constexpr unsigned short kPathTooLong = 1702;
inline constexpr std::size_t kPathSize = 1280;

// Copies `text` and `suffix` one after the other, whole or not at all. Returns 0, or 1702 with an
// empty `out`.
[[nodiscard]] unsigned short putWhole(char* out, std::size_t size, const char* text,
                                      const char* suffix = "");

}  // namespace api

#endif  // API_CLIENTDIRS_H
