// trace.h: the common trace layer: class flags, the trace file, and the TRACE statement.
//
// Tracing is off until a trace file is open. A line is written only when its class flag is on; the
// TRACE statement tests that flag before it evaluates anything, so that a line that is off costs
// one predictable branch, and it preserves errno. Writing never allocates. Every line passes
// through VEXCTraceStatement (agttrc.h), which the TRACE statement uses.
//
// Trace file, when it is a plain file:
//
//   offset 0   "ZYL Trace   "            12 characters
//          12  wrap position             12 digits: the offset of the next line, once the file has
//                                        wrapped; "123456789012" before that
//          24  version banner, build date, line end
//          ..  lines
//
// A file that has reached its largest size continues right after its first line, over the oldest
// lines; the wrap position tells a reader where the newest lines end and the oldest begin.
#ifndef COMMON_UT_TRACE_H
#define COMMON_UT_TRACE_H

#include <cstddef>
#include <cstdint>

#include "common/ut/agttrc.h"

#define TRACE_CLASS(name) extern unsigned char TR_##name;
#define TEST_FLAG(name) extern unsigned char TEST_##name;
#include "common/ut/trcclass.def"

// On while the word "ALL" is on: for lines too numerous for any other class.
extern unsigned char TR_ALL;

// TRACE(flag, format, arguments...): one line in the class of `flag`, printf's format.
#define TRACE(flag, ...) TRACE_AS(flag, __FILE__, __VA_ARGS__)

// The same with a source name of the caller's choice in the line's prefix.
#define TRACE_AS(flag, source, ...)                      \
  do {                                                   \
    if (flag) [[unlikely]] {                             \
      VEXCTraceStatement traceStatement_;                \
      traceStatement_.initStatement((source), __LINE__); \
      traceStatement_.write(__VA_ARGS__);                \
    }                                                    \
  } while (false)

// Closes the trace file, if one is open. Tracing is off afterwards.
void trClose();

// Sets the largest size of the trace file in MB; 0: no limit. Call it before the file is opened.
void trSetMaxTraceSize(unsigned long megabytes);

// The number of the calling thread: 1 for the first that asks, 2 for the next, and so on.
unsigned trTIDProc();

namespace ut {

inline constexpr std::uint32_t kTraceNoMemory = 102;
inline constexpr std::uint32_t kTraceNotOpened = 406;
inline constexpr std::uint32_t kTraceClassUnknown = 419;
inline constexpr std::size_t kMaxTraceLine = 5182;

// Makes the one trace object of the process. `clientType` tells the product's programs apart, and
// `threadName` returns the number of the calling thread. Returns 0 or kTraceNoMemory.
std::uint32_t createTrace(int clientType, unsigned (*threadName)());

// Closes tracing and frees the trace object.
void destroyTrace();

// Opens the trace target: "CONSOLE" or "STDERR" is standard error, "STDOUT" standard output, any
// other name a file, created with mode 0600. An existing trace is continued; any other plain file
// that is not empty is refused and left alone. Returns 0, or kTraceNotOpened after a line on
// standard output.
std::uint32_t openTrace(const char* name);

// True while lines can be written.
bool traceIsOpen();

// Writes one finished text with the time-stamp, process and thread prefixes that are switched on.
void writeTraceLine(const char* text, std::size_t length);

}  // namespace ut

#endif  // COMMON_UT_TRACE_H
