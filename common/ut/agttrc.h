// agttrc.h: the agent's trace layer: the run's trace object, and the TRACE statement.
//
// trace.h below it has the flags, files and prefixes; this layer knows the words that switch
// classes and test flags (trcclass.def), and every line passes through its VEXCTraceStatement.
//
// A line is written only while its class flag is on. TRACE tests that flag before it evaluates
// anything, so that a line that is off costs one predictable branch, and it preserves errno.
#ifndef COMMON_UT_AGTTRC_H
#define COMMON_UT_AGTTRC_H

#include <cstdint>
#include <string>

#include "common/ut/trace.h"
#include "common/ut/traceformat.h"

// Owns tracing for the run. The entry code creates it once, early; its destructor ends tracing.
class VEXCTrace {
 public:
  VEXCTrace();
  ~VEXCTrace();
  VEXCTrace(const VEXCTrace&) = delete;
  VEXCTrace& operator=(const VEXCTrace&) = delete;

  // Switches the process and thread numbers on, opens the trace target (see ut::openTrace) and,
  // unless `banner` is 0, writes the start banner. Returns 0; 419 if those two classes do not
  // exist; the result of creating the trace object if that failed; or the code of the opening.
  [[nodiscard]] std::uint32_t trBegin(const char* fileName, int banner);

  // Switches the classes that `flags` names on or off. Its words are case-insensitive and separated
  // by blanks, commas, tabs, quotes or line ends; a leading "-" reverses a word. A word that is
  // both a class and an aggregate switches both; switching an aggregate off switches nothing on.
  // Returns the result of creating the trace object.
  std::uint32_t trEnable(const char* flags, bool on);

  // Sets the test flags that `flags` names, by the same rules.
  void trTestEnable(const char* flags);

 private:
  std::uint32_t created_;
};

namespace ut {

// The words of a list that VEXCTrace::trEnable or trTestEnable would ignore, separated by blanks;
// empty if there are none. Throws std::bad_alloc.
std::string unknownTraceWords(const char* flags);
std::string unknownTestWords(const char* flags);

}  // namespace ut

// The one trace object of the run, null before it is created and after it is deleted.
extern VEXCTrace* trcClass;

// One trace line. Made on the stack by the TRACE statement, which has tested the class flag.
class VEXCTraceStatement {
 public:
  // `file` may carry a directory, which is dropped.
  void initStatement(const char* file, int line);

  // Writes the line, with the source's name and line in front while TR_PREFIX is on. Texts that are
  // inserted are made printable: only the format ends a line. A line longer than ut::kMaxTraceLine
  // is cut. errno is preserved; nothing is allocated.
  void write(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // Keeps the line ends of inserts: only for texts that the program has put together itself.
  void keepLineEnds() { lineEnds_ = ut::LineEnds::kOfTheInserts; }

 private:
  std::int32_t state_ = 0;  // nothing is written unless 0
  std::int32_t line_ = 0;
  const char* file_ = "";
  ut::LineEnds lineEnds_ = ut::LineEnds::kOfTheFormat;
};

// TRACE(flag, format, arguments...): one line in the class of `flag`, printf's format. An insert
// never ends a line; for one that has lines of its own, TRACE_LINES.
#define TRACE(flag, ...) TRACE_AS(flag, __FILE__, __VA_ARGS__)

// The same with a source name of the caller's choice in the line's prefix.
#define TRACE_AS(flag, source, ...) TRACE_STATEMENT(flag, source, (void)0, __VA_ARGS__)

// TRACE for inserts whose line ends are the program's own.
#define TRACE_LINES(flag, ...) \
  TRACE_STATEMENT(flag, __FILE__, traceStatement_.keepLineEnds(), __VA_ARGS__)

#define TRACE_STATEMENT(flag, source, setting, ...)      \
  do {                                                   \
    if (flag) [[unlikely]] {                             \
      VEXCTraceStatement traceStatement_;                \
      traceStatement_.initStatement((source), __LINE__); \
      setting;                                           \
      traceStatement_.write(__VA_ARGS__);                \
    }                                                    \
  } while (false)

#endif  // COMMON_UT_AGTTRC_H
