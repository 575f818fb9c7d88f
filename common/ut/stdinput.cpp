// stdinput.cpp: standard input through a buffer of the program's own, see stdinput.h.
#include "common/ut/stdinput.h"

#include <unistd.h>

#include <cstddef>
#include <utility>

#include "common/ut/result.h"
#include "common/ut/secret.h"

namespace {

constexpr std::size_t kSize = 4096;

bool owned = false;
unsigned char buffer[kSize];
std::size_t next = 0, end = 0;  // buffer[next] to buffer[end - 1] are not handed out yet

// Whether there is a byte to hand out.
bool fill() {
  if (next < end) return true;
  next = end = 0;
  const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
  if (got > 0) end = static_cast<std::size_t>(got);
  return got > 0;
}

}  // namespace

void ut::ownStandardInput() { owned = true; }

int ut::nextByte(std::FILE* input) {
  if (!owned || input != stdin) return std::getc(input);
  if (!fill()) return EOF;
  return std::exchange(buffer[next++], static_cast<unsigned char>(0));
}

int ut::peekByte(std::FILE* input) {
  if (owned && input == stdin) return fill() ? buffer[next] : EOF;
  const int c = std::getc(input);
  if (c != EOF) ut::ignoreResult(std::ungetc(c, input), "one byte can always be put back");
  return c;
}

void ut::wipeStandardInput() {
  wipe(buffer, sizeof buffer);
  next = end = 0;
}
