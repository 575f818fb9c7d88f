// psterm.h: the terminal: its size, clearing it, and reading a line from it.
#ifndef COMMON_UT_PSTERM_H
#define COMMON_UT_PSTERM_H

#include <cstddef>
#include <cstdio>

// Usable rows and columns of the terminal on standard output: one less than the window has, or 23
// by 79 if its size is unknown. A file or a pipe has 23 by 1024. Does nothing if either pointer is
// null.
void psGetScreenSize(int* rows, int* cols);

// Clears the terminal with the external command "tput clear". Standard output is flushed first:
// what is in its buffer would otherwise appear on the cleared screen. A file or a pipe is flushed
// only: it is not to begin with control codes.
void psClearScrn();

namespace ut {

enum class ReadResult {
  kLine,  // a whole line
  kCut,   // a line that was longer than the buffer; its rest was read and dropped
  kEnd    // end of input, or a read error, before any character
};

// Reads one line into `buffer` without its line end, "\n" or "\r\n", and terminates it. At most
// size - 1 bytes are kept, and the rest of a longer line is dropped, so that it cannot pass for the
// next answer. A NUL byte becomes ASCII's SUB, so that it cannot hide what follows it.
ReadResult readLine(std::FILE* input, char* buffer, std::size_t size);

}  // namespace ut

#endif  // COMMON_UT_PSTERM_H
