// errormsg.h: the agent's error log, vexoerror.log.
//
// Lines are appended whole, under a lock on the file, so that several agent processes can share it.
// Logging never fails as far as callers can see: without the file or its lock, a line is dropped.
#ifndef AGENT_ERRORMSG_H
#define AGENT_ERRORMSG_H

#include <string>

// Appends `text` as one line, after the date, the time and (if `plain` is 0) the process number:
//   11/21/2026 03:15:00 TID<4711> ==> text
void vexoErrorMsg(const char* text, int plain);

// The same before the message system is ready: to standard error, and to the log in the
// installation directory or, if that cannot be written, in the current one.
void psNonNlsErrorMsg(const char* text);

namespace agent {

inline constexpr char kErrorLogName[] = "vexoerror.log";

// Shows a text as a line on the terminal and appends it to the error log.
void showAndLog(const std::string& text);

}  // namespace agent

// The path of the error log, at most 1280 bytes with the terminator: in the directory that the
// options file names with VLTI_LOG, else in the agent's; in the current directory if that one
// cannot be written. Returns 0.
unsigned short getErrorLog(char* path);

// Appends a complete line to a file, which is created with mode 0600 if needed. Does nothing for an
// empty path.
void psWriteError(const char* path, const char* line);

// The local date and time in the run's formats; `out` has room for 80 bytes.
void vexoGetCurTime(char* out);

#endif  // AGENT_ERRORMSG_H
