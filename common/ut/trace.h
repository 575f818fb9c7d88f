// trace.h: the common trace layer: class flags, and the trace file.
//
// Tracing is off until a trace file is open. Writing never allocates. Code that traces includes
// agttrc.h above this layer, which has the TRACE statement.
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

#define TRACE_CLASS(name) extern unsigned char TR_##name;
#define TEST_FLAG(name) extern unsigned char TEST_##name;
#include "common/ut/trcclass.def"

// On while the word "ALL" is on: for lines too numerous for any other class.
extern unsigned char TR_ALL;

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
