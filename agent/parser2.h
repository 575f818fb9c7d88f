// parser2.h: the agent's options file, read into the context of the run.
//
// A line is a keyword and its value. Blank lines and lines that begin with "*" are skipped. The
// first line in error ends the reading. optfile.h finds the file and takes its lines apart.
//
// The options choose the message catalog and the log, so neither is ready here: a failure goes
// through psNonNlsErrorMsg, to standard error and the log in the agent's directory. Its code is
// 2534.
#ifndef AGENT_PARSER2_H
#define AGENT_PARSER2_H

#include <cstdio>

#include "agent/orcctx.h"

// Clears the context and fills it: defaults, then the options file, then what that left empty.
// Returns 0, 2534, or the code of a directory routine. The context keeps what was read up to a
// failure.
[[nodiscard]] unsigned short vexoSetOptions(orcObj_t* orc);

// Opens the options file (see agent::openOptionFileQuietly) and reports a failure. `name` (of
// agent::kFileNameSize bytes) receives its name, `*status` the system's error number or 0. Returns
// 0 or 2534. The caller closes `*file`.
[[nodiscard]] unsigned short vexoOpenOptionFile(std::FILE** file, char* name, int* status);

// Reads the whole file into the context. `name` is for messages. Returns 0 or 2534.
[[nodiscard]] unsigned short vexoParseOptionFile(orcObj_t* orc, std::FILE* file, const char* name);

#endif  // AGENT_PARSER2_H
