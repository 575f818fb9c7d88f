// psterm.cpp: the terminal, see psterm.h.
#include "common/ut/psterm.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <new>

#include "common/ut/progress.h"
#include "common/ut/psshell.h"
#include "common/ut/result.h"
#include "common/ut/stdinput.h"

namespace {

constexpr char kSubstitute = '\x1a';

// Whether `c`, the last byte read, ends the line, or begins the end of one, "\r\n", that is then
// read.
bool endsLine(std::FILE* input, int c) {
  if (c != '\r') return c == '\n';
  if (ut::peekByte(input) != '\n') return false;
  ut::ignoreResult(ut::nextByte(input), "it is the line feed");
  return true;
}

}  // namespace

void psGetScreenSize(int* rows, int* cols) {
  if (rows == nullptr || cols == nullptr) return;
  *rows = 23;
  struct stat output;
  if (::fstat(STDOUT_FILENO, &output) == 0 &&
      (S_ISREG(output.st_mode) || S_ISFIFO(output.st_mode))) {
    *cols = 1024;
    return;
  }
  *cols = 79;
  struct winsize window;
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_row > 0 && window.ws_col > 0) {
    *rows = window.ws_row - 1;
    *cols = window.ws_col - 1;
  }
}

void psClearScrn() {
  ut::eraseProgress();
  ut::ignoreResult(std::fflush(stdout), "a failed write is seen when the program ends");
  if (::isatty(STDOUT_FILENO) == 0) return;
  ut::ShellResult result;
  try {
    result = ut::runShell({"tput clear"});
  } catch (const std::bad_alloc&) {
    // A screen that is not cleared is still readable.
  }
  // An interrupt is meant for this program, not for tput alone.
  if (result.interrupted != 0) ut::ignoreResult(::raise(result.interrupted), "to our own process");
}

ut::ReadResult ut::readLine(std::FILE* input, char* buffer, std::size_t size) {
  // Byte by byte, because fgets cannot tell a NUL in the line from its end.
  std::size_t length = 0;
  bool cut = false;
  int c = nextByte(input);
  if (c == EOF) {
    std::clearerr(input);  // a terminal can go on after Ctrl-D
    buffer[0] = '\0';
    return ReadResult::kEnd;
  }
  for (; c != EOF && !endsLine(input, c); c = nextByte(input)) {
    if (length + 1 < size) {
      buffer[length++] = c == '\0' ? kSubstitute : static_cast<char>(c);
    } else {
      cut = true;
    }
  }
  buffer[length] = '\0';
  return cut ? ReadResult::kCut : ReadResult::kLine;
}
