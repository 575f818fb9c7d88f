// trace.cpp: the common trace layer, see trace.h.
#include "common/ut/trace.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "common/ut/nfdate.h"
#include "common/ut/printable.h"
#include "common/ut/progress.h"
#include "common/ut/psmutex.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

#define TRACE_CLASS(name) unsigned char TR_##name = 0;
#define TEST_FLAG(name) unsigned char TEST_##name = 0;
#include "common/ut/trcclass.def"
unsigned char TR_ALL = 0;

namespace {

constexpr char kFileMark[] = "ZYL Trace   ";
constexpr char kNeverWrapped[] = "123456789012";
constexpr std::size_t kMarkLength = sizeof kFileMark - 1;
constexpr std::size_t kPositionLength = sizeof kNeverWrapped - 1;
constexpr std::size_t kHeaderRoom = 256;
constexpr std::size_t kPrefixRoom = 96;

// The target of the trace. A plain file is written at position_, so that a limited one can wrap;
// without a limit it is opened to append, and Linux then ignores the position. A terminal, a pipe
// or a device (seekable_ is false) is written in order. Any failure to write closes the trace for
// good.
class TraceFile {
 public:
  TraceFile(int clientType, unsigned (*threadName)())
      : clientType_(clientType), threadName_(threadName) {
    psMutexInit(&wrapMutex_);
  }
  ~TraceFile() { close(); }
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  void limit(unsigned long megabytes) { megabytes_ = megabytes; }

  std::uint32_t open(const char* name) {
    close();
    ut::ignoreResult(ut::copyText(name_, name), "only printed");
    if (!openTarget(name) || !takeUp()) {
      close();
      std::printf("Unable to open trace output file %s\n", ut::printable(name).c_str());
      return ut::kTraceNotOpened;
    }
    writeStart();
    return 0;
  }

  void close() {
    if (descriptor_ > STDERR_FILENO) {
      ut::ignoreResult(::close(descriptor_), "every line was written on its own");
    }
    descriptor_ = -1;
  }

  void writeLine(const char* text, std::size_t length) {
    char line[kPrefixRoom + ut::kMaxTraceLine];
    std::size_t used = linePrefix(line, kPrefixRoom);
    length = length < ut::kMaxTraceLine ? length : ut::kMaxTraceLine;
    std::memcpy(line + used, text, length);
    ut::MutexGuard guard(wrapMutex_);
    if (!seekable_) ut::eraseProgress();  // it may go to the terminal
    append(line, used + length);
  }

 private:
  bool openTarget(const char* name) {
    if (::strcasecmp(name, "CONSOLE") == 0 || ::strcasecmp(name, "STDERR") == 0) {
      descriptor_ = STDERR_FILENO;
    } else if (::strcasecmp(name, "STDOUT") == 0) {
      descriptor_ = STDOUT_FILENO;
    } else {
      // Without a limit several runs may share the file: each line is appended where the file ends
      // by then.
      const int toTheEnd = megabytes_ == 0 ? O_APPEND : 0;
      descriptor_ = ::open(name, O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | toTheEnd, 0600);
    }
    return descriptor_ >= 0;
  }

  // Finds the place of the next line: after a new header, or after what an earlier run wrote.
  //
  // A trace of ours is known by its mark and by the end of its first line. A wrap position outside
  // the file, damaged or foreign, counts as the end of the file.
  bool takeUp() {
    struct stat entry;
    if (::fstat(descriptor_, &entry) != 0) return false;
    seekable_ = S_ISREG(entry.st_mode) && descriptor_ > STDERR_FILENO;
    position_ = 0;
    wrapped_ = false;
    if (!seekable_) return true;
    if (entry.st_size == 0) return writeHeader();
    char header[kHeaderRoom];
    const ssize_t got = ::pread(descriptor_, header, sizeof header, 0);
    if (got < static_cast<ssize_t>(kMarkLength + kPositionLength) ||
        std::memcmp(header, kFileMark, kMarkLength) != 0) {
      return false;  // not a trace: a file named by mistake
    }
    const void* lineEnd = std::memchr(header, '\n', static_cast<std::size_t>(got));
    if (lineEnd == nullptr) return false;
    headerEnd_ = static_cast<const char*>(lineEnd) - header + 1;
    position_ = entry.st_size;
    wrapped_ = std::memcmp(header + kMarkLength, kNeverWrapped, kPositionLength) != 0;
    if (wrapped_) goOnAtWrapPosition(header + kMarkLength, entry.st_size);
    return true;
  }

  void goOnAtWrapPosition(const char* field, off_t fileSize) {
    char digits[kPositionLength + 1];
    std::memcpy(digits, field, kPositionLength);
    digits[kPositionLength] = '\0';
    const long long position = std::strtoll(digits, nullptr, 10);
    if (position >= headerEnd_ && position <= fileSize) position_ = static_cast<off_t>(position);
  }

  bool writeHeader() {
    char header[kHeaderRoom];
    const int length = std::snprintf(header, sizeof header,
                                     "%s%sVEX for Oracle trace, Version 8, Release 1, "
                                     "Level 13.0, built %s %s, client type %d\n",
                                     kFileMark, kNeverWrapped, __DATE__, __TIME__, clientType_);
    headerEnd_ = length;
    return put(header, static_cast<std::size_t>(length));
  }

  void writeStart() {
    writeText("BEGINNING NEW TRACE\n\n");
    char text[kHeaderRoom + sizeof name_];
    char shown[sizeof name_];
    std::size_t length = 0;
    ut::forEachPrintable(name_, [&](std::string_view part) {
      length += part.copy(shown + length, sizeof shown - 1 - length);
    });
    shown[length] = '\0';
    std::snprintf(text, sizeof text, "Tracing to file: %s\n", shown);
    writeText(text);
    if (megabytes_ == 0) return;
    std::snprintf(text, sizeof text, "Tracefile maximum length set to %lu MB.\n", megabytes_);
    writeText(text);
  }

  void writeText(const char* text) {
    ut::MutexGuard guard(wrapMutex_);
    append(text, std::strlen(text));
  }

  // The prefixes that are switched on, in their fixed order. Returns their length.
  std::size_t linePrefix(char* out, std::size_t size) const {
    int used = 0;
    const auto add = [&](const char* format, auto... values) {
      const int more =
          std::snprintf(out + used, size - static_cast<std::size_t>(used), format, values...);
      used += more;
    };
    if (TR_TIMESTAMP) {
      unsigned milliseconds = 0;
      const nfDate now = ut::localNow(&milliseconds);
      add("%s %s.%03lu ", ut::formatDate(now).text, ut::formatTime(now).text,
          static_cast<unsigned long>(milliseconds));
    }
    if (TR_PID) add("[%.6u] ", static_cast<unsigned>(::getpid()));
    if (TR_TID) add("[%u] ", threadName_());
    if (TR_TIMESTAMP || TR_PID || TR_TID) add("%s", ": ");
    return static_cast<std::size_t>(used);
  }

  // The line first, then the wrap position: a run that is killed in between loses its last line,
  // while the other order would pass off the remains of an old line as the newest.
  void append(const char* text, std::size_t length) {
    if (!isOpen()) return;
    if (descriptor_ == STDOUT_FILENO) std::fflush(stdout);  // keep the order on the screen
    const bool limited = seekable_ && megabytes_ != 0;
    if (limited && position_ + static_cast<off_t>(length) > largestSize() && !wrap()) return fail();
    if (!put(text, length)) return fail();
    if (limited && wrapped_ && !notePosition()) fail();
  }

  bool wrap() {
    position_ = headerEnd_;
    wrapped_ = true;
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "Continued from end of segment %u\n\n", ++segment_);
    return put(text, static_cast<std::size_t>(length));
  }

  // The remainder keeps the field at its 12 digits.
  bool notePosition() {
    char field[24];
    std::snprintf(field, sizeof field, "%012lld",
                  static_cast<long long>(position_) % 1000000000000);
    return ::pwrite(descriptor_, field, kPositionLength, kMarkLength) ==
           static_cast<ssize_t>(kPositionLength);
  }

  bool put(const char* text, std::size_t length) {
    while (length > 0) {
      const ssize_t written = seekable_ ? ::pwrite(descriptor_, text, length, position_)
                                        : ::write(descriptor_, text, length);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return false;
      position_ += written;
      text += written;
      length -= static_cast<std::size_t>(written);
    }
    return true;
  }

  void fail() {
    close();
    ut::eraseProgress();
    std::printf("Unable to write to trace file %s. Tracing disabled.\n",
                ut::printable(name_).c_str());
  }

  off_t largestSize() const { return static_cast<off_t>(megabytes_) * 1024 * 1024; }

  const int clientType_;
  unsigned (*const threadName_)();
  psMutex_t wrapMutex_;
  char name_[1280] = "";
  unsigned long megabytes_ = 0;
  int descriptor_ = -1;
  bool seekable_ = false;
  bool wrapped_ = false;
  unsigned segment_ = 0;
  off_t position_ = 0;
  off_t headerEnd_ = 0;
};

TraceFile* traceFile = nullptr;

}  // namespace

void trClose() {
  if (traceFile != nullptr) traceFile->close();
}

void trSetMaxTraceSize(unsigned long megabytes) {
  if (traceFile != nullptr) traceFile->limit(megabytes);
}

unsigned trTIDProc() {
  static std::atomic<unsigned> last{0};
  thread_local const unsigned own = ++last;
  return own;
}

std::uint32_t ut::createTrace(int clientType, unsigned (*threadName)()) {
  // The first use of the local time loads the time zone, which allocates; a line must not do that.
  ignoreResult(localNow(), "called for the time zone alone");
  if (traceFile == nullptr) traceFile = new (std::nothrow) TraceFile(clientType, threadName);
  return traceFile == nullptr ? kTraceNoMemory : 0;
}

void ut::destroyTrace() {
  delete traceFile;
  traceFile = nullptr;
}

std::uint32_t ut::openTrace(const char* name) {
  return traceFile == nullptr ? kTraceNotOpened : traceFile->open(name);
}

bool ut::traceIsOpen() { return traceFile != nullptr && traceFile->isOpen(); }

void ut::writeTraceLine(const char* text, std::size_t length) {
  if (traceFile != nullptr) traceFile->writeLine(text, length);
}
