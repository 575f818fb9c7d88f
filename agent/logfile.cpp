// logfile.cpp: files to which several agent processes append, see logfile.h.
#include "agent/logfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "agent/optfile.h"
#include "agent/orcctx.h"
#include "agent/psutil2.h"
#include "api/clientdirs.h"
#include "common/ut/path.h"
#include "common/ut/psfile.h"
#include "common/ut/pssignal.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The last writer was killed, or the disk was full.
bool endsInsideALine(int descriptor) {
  const off_t end = ::lseek(descriptor, 0, SEEK_END);
  char last = '\n';
  return end > 0 && ::pread(descriptor, &last, 1, end - 1) == 1 && last != '\n';
}

// Locks a file, and tries for `waitMs` at most: F_LOCK would wait for ever. Whoever waited in vain
// once waits no more: ten seconds for each line of a run would hold it up for minutes.
bool lock(int descriptor, int waitMs) {
  static constexpr int kPauseMs = 5;
  static bool inVain = false;
  for (int waited = 0;; waited += kPauseMs) {
    if (::lockf(descriptor, F_TLOCK, 0) == 0) {
      inVain = false;
      return true;
    }
    const bool held = errno == EAGAIN || errno == EACCES || errno == EINTR;
    if (!held) return false;
    if (inVain || waited >= waitMs) break;
    const struct timespec pause = {0, kPauseMs * 1000000L};
    ut::ignoreResult(::nanosleep(&pause, nullptr), "a shorter pause is as good");
  }
  inVain = true;
  return false;
}

// What becomes of a text of which only the beginning could be written.
enum class Rest { kKept, kRemoved };

// Appends to an open file, or does nothing if `descriptor` is negative, and closes it. True if
// everything is in the file.
bool appendTo(int descriptor, std::string_view text, int waitMs, Rest rest) {
  if (descriptor < 0) return false;
  bool written = lock(descriptor, waitMs);
  if (written) {
    const ut::SignalsHeld held;  // a signal that ends the program must not cut a line off
    const off_t before = ::lseek(descriptor, 0, SEEK_END);
    if (!text.empty() && endsInsideALine(descriptor)) written = writeAll(descriptor, "\n");
    written = written && writeAll(descriptor, text);
    if (!written && rest == Rest::kRemoved && before >= 0) {
      ut::ignoreResult(::ftruncate(descriptor, before), "nothing else is left to be tried");
    }
    // The lock covers the file from its beginning; the position has moved since.
    ut::ignoreResult(::lseek(descriptor, 0, SEEK_SET), "closing unlocks as well");
    ut::ignoreResult(::lockf(descriptor, F_ULOCK, 0), "closing unlocks as well");
  }
  return ::close(descriptor) == 0 && written;
}

}  // namespace

void agent::logIn(const char* directory, const char* name, char* path) {
  if (::access(directory, W_OK) == 0) {
    const int wanted =
        std::snprintf(path, api::kPathSize, "%s%s%s", directory, ut::slashAfter(directory), name);
    if (wanted < static_cast<int>(api::kPathSize)) return;
  }
  ut::ignoreResult(ut::copyText(path, api::kPathSize, name), "names of logs are short");
}

void agent::findLog(const char* name, char* path) {
  char directory[kOptionSize] = "";
  const ut::FilePtr options = openOptionFileQuietly(nullptr);
  if (options == nullptr || vexoGetOption(options.get(), "VLTI_LOG", directory) != 0) {
    if (psvexoGetVexoDir(directory, sizeof directory) != 0) *directory = '\0';
  }
  logIn(directory, name, path);
}

bool agent::appendLocked(const char* path, std::string_view text, int waitMs) {
  // O_APPEND, because after a seek we could still overwrite the line of a writer that takes no
  // lock.
  return appendTo(::open(path, O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600), text,
                  waitMs, Rest::kKept);
}

bool agent::appendWhole(const char* path, std::string_view lines) {
  return appendTo(ut::openOwnForAppend(path), lines, kLockWaitMs, Rest::kRemoved);
}
