// memory.h: what this process keeps in its memory.
#ifndef TESTS_SUPPORT_MEMORY_H
#define TESTS_SUPPORT_MEMORY_H

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace support {

// Whether a text is anywhere in the memory that this process can write: stack, heap, variables.
// Pass a literal: a text that is itself in such memory finds itself. What is larger than a gigabyte
// is a sanitizer's and left out.
inline bool inMemory(std::string_view text) {
  static char part[1 << 16];
  bool found = false;
  const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  std::ifstream maps("/proc/self/maps");
  for (std::string line; !found && std::getline(maps, line);) {
    unsigned long long at = 0, end = 0;
    char mode[5] = "";
    std::sscanf(line.c_str(), "%llx-%llx %4s", &at, &end, mode);
    if (mode[1] != 'w' || end - at > 1ull << 30) continue;
    for (; !found && at < end; at += sizeof part - text.size()) {
      const ssize_t got =
          ::pread(memory, part,
                  static_cast<std::size_t>(std::min<unsigned long long>(sizeof part, end - at)),
                  static_cast<off_t>(at));
      found = got > 0 && std::string_view(part, static_cast<std::size_t>(got)).find(text) !=
                             std::string_view::npos;
    }
  }
  std::fill_n(part, sizeof part, '\0');  // the next search must not find this one's copies
  ::close(memory);
  return found;
}

// Calls `act` with its variables so deep in the stack that what is called next does not cover them.
template <typename Action>
[[gnu::noinline]] auto deeper(Action act) {
  char room[1 << 15];
  asm volatile("" : : "r"(room));
  return act();
}

}  // namespace support

#endif  // TESTS_SUPPORT_MEMORY_H
