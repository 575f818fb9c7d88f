// trace.cpp: the lists of trace classes and test flags.
#include "common/ut/agttrc.h"
#include "fuzz/fuzz.h"

void fuzz::check(const std::string& input, char* text) {
  static VEXCTrace trace;
  trace.trTestEnable(text);
  trace.trEnable(text, true);
  trace.trEnable(text, false);
  hold(std::strcmp(input.c_str(), text) == 0, "a list is only read");
  const std::string unknown = ut::unknownTraceWords(text);
  hold(unknown.size() <= input.size(), "unknown words are words of the list");
}
