// psfile.h: files that hold what nobody else may read, in directories where anybody may write.
//
// The SQL script (it holds a password), the spool file and the diagnostic list live in the
// system's temporary directory. Another user may plant a link or a file there under a name that he
// guessed; such an entry is refused, never followed and never truncated.
#ifndef COMMON_UT_PSFILE_H
#define COMMON_UT_PSFILE_H

#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace ut {

struct FileCloser {
  void operator()(std::FILE* file) const {
    if (file != nullptr) ignoreClose(file);
  }
  static void ignoreClose(std::FILE* file);
};

// Owns an open stream. A file that was written is closed by hand with closeFile, so that a full
// disk is noticed; this closes it on every other way out.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// Closes a stream. True if everything that was written to it reached the file.
[[nodiscard]] bool closeFile(FilePtr file);

// The directory that the environment variable TMPDIR names, or /tmp if it names none. Throws
// std::bad_alloc.
std::string tempDirectory();

// A new name in that directory: `prefix` (at most 5 characters of it) and six random characters.
// Nothing exists under the name at that moment, and nothing is created. Empty if no such name could
// be made.
std::string tempName(std::string_view prefix);

// Opens `path` for reading and writing, empty, as a plain file that only this user can read (mode
// 0600). A new file is created; an existing one is emptied only if it is a plain file of this
// user under this one name. Null with errno otherwise (EEXIST when the entry is not acceptable).
FilePtr openPrivateFile(const char* path);

// Opens `path` for reading if it is a plain file of this user under this one name. Null with errno
// otherwise (EEXIST when the entry is not acceptable, a link included). `entry`, if not null,
// receives the file's status.
FilePtr openOwnFile(const char* path, struct stat* entry);

// Opens `path` for reading and appending, as a plain file of this user under this one name; a new
// one is created with mode 0600. A descriptor, or -1 with errno (EEXIST when the entry is not
// acceptable, a link included).
[[nodiscard]] int openOwnForAppend(const char* path);

// The three standard descriptors, as the program found them.
struct StandardFiles {
  bool ready = false;            // all three are open now
  bool outputWasClosed = false;  // what is printed is lost
};

// Opens /dev/null on each standard descriptor that is closed. Called before anything else is
// opened: the next file would take the free number, and its contents would pass for answers, or
// the program's output would be written into it.
[[nodiscard]] StandardFiles openStandardFiles();

// Whether one more block can be written beside `path` at this moment: neither disk nor quota is
// full. Tries it with a private file, which is removed again.
[[nodiscard]] bool hasRoomBeside(const std::string& path);

}  // namespace ut

#endif  // COMMON_UT_PSFILE_H
