// psutpswd.h: reading a password from the terminal without echo.
#ifndef UTILITY_UNX_PSUTPSWD_H
#define UTILITY_UNX_PSUTPSWD_H

// Reads a line from /dev/tty without echo: at most `size` bytes, terminated, so that `buffer` has
// room for size + 1. What was typed ahead is read as well. The terminal's settings and the SIGINT
// action are as before on every way out. Ctrl-C ends the reading; the interrupt is then delivered
// to the process, after the echo is back. Returns the length, or -1 when the terminal cannot be
// opened or set.
[[nodiscard]] int readPass(char* buffer, int size);

// Installs a handler for `sig` with an empty mask and without restarting system calls. Returns 0
// or -1, as sigaction.
[[nodiscard]] int install_sig_handler(int sig, void (*handler)(int));

// The SIGINT handler of readPass: it only notes that the signal came.
void Catch(int sig);

#endif  // UTILITY_UNX_PSUTPSWD_H
