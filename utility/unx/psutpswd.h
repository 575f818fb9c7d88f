// psutpswd.h: the change of the node's password, and reading a password without echo.
//
// No command of vexosync reaches the change; it is linked for the agent's own use.
#ifndef UTILITY_UNX_PSUTPSWD_H
#define UTILITY_UNX_PSUTPSWD_H

#include "agent/orcctx.h"
#include "utility/utparser.h"

// Changes the password of the node on the storage server, and in the agent's own password file when
// the agent keeps one. Takes the passwords from the options when both are there, else asks. The
// library is set up; the session's handle is left in the context, ended. Returns 0 (also when only
// the file could not be written: message 160), 2620, 2621, 2521, -1 when the prompting failed, or
// the library's code.
[[nodiscard]] short psvexoPassWord(orcObj_t* orc, vexoOptionsInfo_t& options);

// Asks for the old and twice for the new password; each buffer has kPasswordSize bytes. Returns 0
// when all were given and the new ones agree, else -1, after a message.
[[nodiscard]] int getPwInput(char* oldPw, char* newPw, char* confirmPw);

// Reads a line from /dev/tty without echo: at most `size` bytes, terminated, so that `buffer` has
// room for size + 1. What was typed ahead is read as well. The terminal's settings and the signal
// actions are as before on every way out, also while the program is stopped, and before a signal
// that ends the program does so. Ctrl-C ends the reading; the interrupt is then delivered to the
// process, after the echo is back. Returns the length, or -1 when the terminal cannot be opened or
// set.
[[nodiscard]] int readPass(char* buffer, int size);

// Installs a handler for `sig` with an empty mask and without restarting system calls. Returns 0
// or -1, as sigaction.
[[nodiscard]] int install_sig_handler(int sig, void (*handler)(int));

// The SIGINT handler of readPass: it only notes that the signal came.
void Catch(int sig);

#endif  // UTILITY_UNX_PSUTPSWD_H
