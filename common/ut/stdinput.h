// stdinput.h: standard input through a buffer of the program's own.
//
// Passwords of a script come through standard input. stdio would keep them in its buffer, which it
// neither wipes nor shows. Here each byte is wiped when it is handed out, so that what was asked
// and used is gone; what is not asked for yet is wiped at the end.
#ifndef COMMON_UT_STDINPUT_H
#define COMMON_UT_STDINPUT_H

#include <cstdio>

namespace ut {

// Takes standard input over from stdio for the rest of the process. Call it before anything is
// read.
void ownStandardInput();

// The next byte of a stream, or EOF, as getc. Every reader of standard input uses this.
int nextByte(std::FILE* input);

// The byte that nextByte returns next, or EOF. Waits for it.
int peekByte(std::FILE* input);

// Wipes what was read and not handed out. It is lost: for the end of the run.
void wipeStandardInput();

}  // namespace ut

#endif  // COMMON_UT_STDINPUT_H
