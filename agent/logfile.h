// logfile.h: files to which several agent processes append, and where they are.
#ifndef AGENT_LOGFILE_H
#define AGENT_LOGFILE_H

#include <string_view>

namespace agent {

// The path of the log `name` in `directory` if that can be written, else in the current directory;
// `path` has room for api::kPathSize bytes.
void logIn(const char* directory, const char* name, char* path);

// The same in the directory that the options file names with VLTI_LOG, else in the agent's. Reads
// the options file itself: a line may have to be logged before there is a context.
void findLog(const char* name, char* path);

// How long a line waits for the lock of its file. A file server that died can hold it for ever.
inline constexpr int kLockWaitMs = 10000;

// Appends complete lines to a file under a lock on the whole file, so that lines of several
// processes are never mixed; signals wait while they are written. A line that a killed process or a
// full disk cut off is ended first, and stays a line of its own. The file is created with mode 0600
// if needed. False when something did not reach the file, or the lock was not free for `waitMs`;
// after that, lines of this process wait no longer until one gets a lock. An empty text only tries
// whether the file can be opened and locked. Not thread-safe.
bool appendLocked(const char* path, std::string_view text, int waitMs = kLockWaitMs);

// The same for a file that the user names and other programs read: each line is in it whole or not
// at all. Takes only a plain file of this user under this one name; a link is not followed. If the
// disk becomes full, the lines of this call are removed again. Only SIGKILL can leave half a line.
bool appendWhole(const char* path, std::string_view lines);

}  // namespace agent

#endif  // AGENT_LOGFILE_H
