// parser2.h: the agent's options file.
//
// A line names a keyword and its value; empty lines and lines that begin with "*" are skipped.
// Failures here come before the message catalog is open for the run: they are written as plain
// text through psNonNlsErrorMsg, and the code is 2534.
#ifndef AGENT_PARSER2_H
#define AGENT_PARSER2_H

#include <cstddef>
#include <cstdio>

#include "agent/orcctx.h"
#include "common/ut/psfile.h"

// Clears the context and fills it: defaults, then the options file, then what that left empty.
// Returns 0, 2534, or the code of a directory routine. The context keeps what was read up to a
// failure.
[[nodiscard]] unsigned short vexoSetOptions(orcObj_t* orc);

// Opens the options file: the one that the environment variable VEXO_OPTFILE names (a pair of
// quotes around it is dropped), else vexo.opt in the agent's directory. `name` (of
// agent::kFileNameSize bytes) receives its name, `*status` the system's error number or 0. Returns
// 0 or 2534. The caller closes `*file`.
[[nodiscard]] unsigned short vexoOpenOptionFile(std::FILE** file, char* name, int* status);

// Reads the whole file into the context. `name` is for messages. Returns 0 or 2534.
[[nodiscard]] unsigned short vexoParseOptionFile(orcObj_t* orc, std::FILE* file, const char* name);

// Looks one keyword up in an open options file, from its beginning; `value` has room for
// kOptionSize bytes. Returns 0, or 65535 when the keyword or its value is missing.
[[nodiscard]] unsigned short vexoGetOption(std::FILE* file, const char* keyword, char* value);

// The next line that is neither empty nor a comment, without its line end, in `line`; null at the
// end of the file. `*lineNumber` counts every line read.
char* utGetNextLine(char* line, std::size_t size, std::FILE* file, int* lineNumber);

namespace agent {

inline constexpr std::size_t kFileNameSize = 1025;

// vexoOpenOptionFile without a message: for callers that have an answer to a missing file. `name`
// may be null.
ut::FilePtr openOptionFileQuietly(char* name);

}  // namespace agent

#endif  // AGENT_PARSER2_H
