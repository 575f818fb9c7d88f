// optfile.h: reading the agent's options file line by line.
//
// The layer below parser2: it finds the file, skips what is no option and takes a line apart, but
// knows no keyword and reports nothing. The error log uses it as well, because VLTI_LOG says where
// the log is; so nothing here may write to the log.
#ifndef AGENT_OPTFILE_H
#define AGENT_OPTFILE_H

#include <cstddef>
#include <cstdio>

#include "common/ut/psfile.h"

// The next line that is neither blank nor a comment, in `line` without its line end; null at the
// end of the file. `*lineNumber` counts every line read, the skipped ones included. A line longer
// than `size` - 1 bytes is returned in parts, each of which counts as a line. Kept on purpose,
// pinned by OptionsFile.StopsAtTheFirstLineInError.
char* utGetNextLine(char* line, std::size_t size, std::FILE* file, int* lineNumber);

// Looks one keyword up in an open options file, from its beginning. `value` has room for
// kOptionSize bytes. Returns 0, or 65535 if the keyword or its value is missing.
//
// The first line with the keyword counts, while vexoParseOptionFile lets the last one count. Kept
// on purpose, pinned by ErrorLog.IsWhereItCanBeWritten and
// OptionsFile.TakesValuesAsPeopleWriteThem.
[[nodiscard]] unsigned short vexoGetOption(std::FILE* file, const char* keyword, char* value);

namespace agent {

inline constexpr std::size_t kFileNameSize = 1025;
inline constexpr std::size_t kOptionLineSize = 513;

// Opens the options file: the one that the environment variable VEXO_OPTFILE names (a pair of
// quotes around it is dropped), else vexo.opt in the agent's directory. `name` (of kFileNameSize
// bytes, may be null) receives its name even if it cannot be opened. Null with errno otherwise.
ut::FilePtr openOptionFileQuietly(char* name);

// A line of the options file, taken apart in place.
struct OptionLine {
  char* keyword;  // in capital letters; null if the line holds delimiters only
  char* rest;     // what follows the keyword's one delimiter; null if nothing does
};
OptionLine splitOptionLine(char* line);

// Removes white space at both ends of a value and every double quote, in place. Returns where the
// value then begins.
char* cleanOptionValue(char* value);

}  // namespace agent

#endif  // AGENT_OPTFILE_H
