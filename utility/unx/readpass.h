// readpass.h: reading a password from the terminal without echo.
#ifndef UTILITY_UNX_READPASS_H
#define UTILITY_UNX_READPASS_H

#include <cstddef>

// Reads a line from /dev/tty without echo: at most `size` bytes, terminated, so that `buffer` has
// room for size + 1. What was typed ahead is read too. Terminal settings and signal actions are
// restored on every way out, while the program is stopped, and before a signal ends the program.
// Ctrl-C ends the reading; the interrupt is delivered to the process once the echo is back. Returns
// the number of bytes read, which is more than the text's length if one of them is NUL, or -1 for a
// terminal that cannot be opened or whose echo cannot be switched.
[[nodiscard]] int readPass(char* buffer, int size);

namespace utility {

// Whether the `length` bytes that readPass returned hold a NUL: compared as a text, such a password
// would end there. Wipes the `size` bytes of the line then, and says so.
bool refuseNul(char* line, std::size_t size, int length);

}  // namespace utility

// The SIGINT handler of readPass: it only notes that the signal came.
void Catch(int sig);

#endif  // UTILITY_UNX_READPASS_H
