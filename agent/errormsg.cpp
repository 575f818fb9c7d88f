// errormsg.cpp: the agent's error log, see errormsg.h.
//
// Every line passes through appendLine, which makes it one line, and psWriteError, which appends it
// under a lock. The two ways in differ in how the log is found: vexoErrorMsg asks the options file,
// psNonNlsErrorMsg, which reports that file's own errors, does not.
#include "agent/errormsg.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "agent/optfile.h"
#include "agent/orcctx.h"
#include "agent/psutil2.h"
#include "api/clientdirs.h"
#include "common/nls/nls.h"
#include "common/ut/nfdate.h"
#include "common/ut/path.h"
#include "common/ut/printable.h"
#include "common/ut/progress.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

constexpr std::size_t kTimeSize = 80;

// The log in `directory` if that can be written, else in the current directory.
void logIn(const char* directory, char* path) {
  *path = '\0';
  if (::access(directory, W_OK) == 0) {
    const int wanted = std::snprintf(path, api::kPathSize, "%s%s%s", directory,
                                     ut::slashAfter(directory), agent::kErrorLogName);
    if (wanted < static_cast<int>(api::kPathSize)) return;
  }
  ut::ignoreResult(ut::copyText(path, api::kPathSize, agent::kErrorLogName), "made to fit");
}

void writeAll(int descriptor, const char* text) {
  std::size_t length = std::strlen(text);
  while (length > 0) {
    const ssize_t written = ::write(descriptor, text, length);
    if (written <= 0) return;
    text += written;
    length -= static_cast<std::size_t>(written);
  }
}

}  // namespace

void vexoGetCurTime(char* out) {
  const nfDate now = ut::localNow();
  std::snprintf(out, kTimeSize, "%s %s", ut::formatDate(now).text, ut::formatTime(now).text);
}

// Reads the options file itself: a line may have to be logged before there is a context, or by a
// caller that has none.
unsigned short getErrorLog(char* path) {
  char directory[kOptionSize] = "";
  const ut::FilePtr options = agent::openOptionFileQuietly(nullptr);
  if (options == nullptr || vexoGetOption(options.get(), "VLTI_LOG", directory) != 0) {
    if (psvexoGetVexoDir(directory, sizeof directory) != 0) *directory = '\0';
  }
  logIn(directory, path);
  return 0;
}

void psWriteError(const char* path, const char* line) {
  if (*path == '\0') return;
  // O_APPEND, because after a seek we could still overwrite the line of a writer that takes no
  // lock.
  const int descriptor = ::open(path, O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600);
  if (descriptor < 0) return;
  if (::lockf(descriptor, F_LOCK, 0) == 0) {
    writeAll(descriptor, line);
    // The lock covers the file from its beginning; the position has moved since.
    ut::ignoreResult(::lseek(descriptor, 0, SEEK_SET), "closing unlocks as well");
    ut::ignoreResult(::lockf(descriptor, F_ULOCK, 0), "closing unlocks as well");
  }
  ut::ignoreResult(::close(descriptor), "a lost line stops nothing");
}

namespace {

enum class LineKind { kPlain, kMessage, kEarly };

// Appends a text as one line: foreign text must not start a second one that looks like ours.
void appendLine(const char* path, LineKind kind, const char* text) {
  char time[kTimeSize];
  vexoGetCurTime(time);
  try {
    std::string_view wanted(text);
    while (wanted.ends_with('\n')) wanted.remove_suffix(1);
    const std::string message = ut::printable(wanted);
    std::string line(message.size() + sizeof time + 64, '\0');
    if (kind == LineKind::kPlain) {
      std::snprintf(line.data(), line.size(), "%s %s\n", time, message.c_str());
    } else if (kind == LineKind::kMessage) {
      std::snprintf(line.data(), line.size(), "%s TID<%d> ==> %s\n", time, psvexoGetID(),
                    message.c_str());
    } else {
      // Two blanks on each side of the arrow, where other lines have one. Kept on purpose, pinned
      // by ErrorLog.LinesCarryTimeAndProcess.
      std::snprintf(line.data(), line.size(), "%s TID<%d>  ==>  %s\n", time, psvexoGetID(),
                    message.c_str());
    }
    psWriteError(path, line.c_str());
  } catch (const std::bad_alloc&) {
    psWriteError(path, "QRB2522S Not enough memory.\n");
  }
}

}  // namespace

void vexoErrorMsg(const char* text, int plain) {
  char path[api::kPathSize];
  ut::ignoreResult(getErrorLog(path), "always finds one");
  appendLine(path, plain != 0 ? LineKind::kPlain : LineKind::kMessage, text);
}

void agent::showAndLog(const std::string& text) {
  nlprintf(msg::kLine, text);
  vexoErrorMsg(text.c_str(), 0);
}

void psNonNlsErrorMsg(const char* text) {
  std::fflush(stdout);
  ut::eraseProgress();
  std::fprintf(stderr, "%s\n", text);
  char directory[kOptionSize] = "";
  if (psvexoGetVexoDir(directory, sizeof directory) != 0) *directory = '\0';
  char path[api::kPathSize];
  logIn(directory, path);
  appendLine(path, LineKind::kEarly, text);
}
