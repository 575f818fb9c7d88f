// agttrc.h: the agent's trace layer: the run's trace object, and the statement behind each line.
//
// It knows the agent's tables of classes, aggregates and test flags (trcclass.def).
#ifndef COMMON_UT_AGTTRC_H
#define COMMON_UT_AGTTRC_H

#include <cstdint>

// Owns tracing for the run: created once, early, by the entry code; its destructor ends tracing.
class VEXCTrace {
 public:
  VEXCTrace();
  ~VEXCTrace();
  VEXCTrace(const VEXCTrace&) = delete;
  VEXCTrace& operator=(const VEXCTrace&) = delete;

  // Switches the process and thread numbers on and opens the trace target (see ut::openTrace).
  // With `banner` not 0 the start banner follows. Returns 0, 419 when those classes do not exist,
  // the result of creating the trace object when that failed, or the code of the opening.
  [[nodiscard]] std::uint32_t trBegin(const char* fileName, int banner);

  // Switches the classes that `flags` names: words separated by blanks, commas or tabs, in any
  // case; a leading "-" turns a word round. A word that names a class and an aggregate does both.
  // Returns the result of creating the trace object.
  std::uint32_t trEnable(const char* flags, bool on);

  // Sets the test flags that `flags` names, by the same rules.
  void trTestEnable(const char* flags);

 private:
  std::uint32_t created_;
};

// The one trace object of the run, null before it is created and after it is deleted.
extern VEXCTrace* trcClass;

// One trace line. Made on the stack by the TRACE statement, which has tested the class flag.
class VEXCTraceStatement {
 public:
  // `file` may carry a directory, which is dropped.
  void initStatement(const char* file, int line);

  // Writes the line, with the source's name and line in front while TR_PREFIX is on. A line longer
  // than ut::kMaxTraceLine is cut. errno stays as it was.
  void write(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  std::int32_t state_ = 0;  // nothing is written unless 0
  std::int32_t line_ = 0;
  const char* file_ = "";
};

#endif  // COMMON_UT_AGTTRC_H
