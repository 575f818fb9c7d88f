// stdinput.cpp: standard input through a buffer of the program's own, see stdinput.h.
#include "common/ut/stdinput.h"

#include <unistd.h>

#include <cstddef>
#include <utility>

#include "common/ut/secret.h"

namespace {

constexpr std::size_t kSize = 4096;

bool owned = false;
unsigned char buffer[kSize];
std::size_t next = 0, end = 0;  // buffer[next] to buffer[end - 1] are not handed out yet

}  // namespace

void ut::ownStandardInput() { owned = true; }

int ut::nextByte(std::FILE* input) {
  if (!owned || input != stdin) return std::getc(input);
  if (next == end) {
    next = end = 0;
    const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (got <= 0) return EOF;
    end = static_cast<std::size_t>(got);
  }
  return std::exchange(buffer[next++], static_cast<unsigned char>(0));
}

void ut::wipeStandardInput() {
  wipe(buffer, sizeof buffer);
  next = end = 0;
}
