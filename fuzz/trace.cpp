// trace.cpp: the lists of trace classes and test flags. A list does what its words do one by one.
#include <utility>

#include "common/ut/agttrc.h"
#include "fuzz/fuzz.h"

namespace {

unsigned char* const kFlags[] = {
#define TRACE_CLASS(name) &TR_##name,
#define TEST_FLAG(name) &TEST_##name,
#include "common/ut/trcclass.def"
    &TR_ALL};

// The flags as a line of signs; they are off afterwards.
std::string takeFlags() {
  std::string signs;
  for (unsigned char* flag : kFlags) signs += std::exchange(*flag, 0) == 0 ? '-' : '+';
  return signs;
}

}  // namespace

void fuzz::check(const std::string&, char* text) {
  static VEXCTrace trace;
  trace.trEnable(text, true);
  trace.trTestEnable(text);
  const std::string atOnce = takeFlags();
  constexpr char kSeparators[] = " ,\t\r\n'\"";
  for (char* word = std::strtok(text, kSeparators); word != nullptr;
       word = std::strtok(nullptr, kSeparators)) {
    trace.trTestEnable(word);
    const bool on = *word != '-';
    if (!on) ++word;
    // Of two minus signs only the first reverses the word; what is left must not be reversed again.
    if (on || *word != '-') trace.trEnable(word, on);
  }
  hold(atOnce == takeFlags(), "a list does what its words do");
}
