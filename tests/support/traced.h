// traced.h: what a piece of code writes to the trace.
#ifndef TESTS_SUPPORT_TRACED_H
#define TESTS_SUPPORT_TRACED_H

#include "common/ut/agttrc.h"
#include "tests/support/captured.h"

namespace support {

// The lines that `act` traces in the classes of `flags`, without prefixes.
template <typename Action>
std::string traced(const char* flags, Action act) {
  Captured output;
  {
    VEXCTrace trace;
    EXPECT_EQ(0u, trace.trBegin("STDOUT", 0));
    for (const char* words : {"-PID -TID", flags}) EXPECT_EQ(0u, trace.trEnable(words, true));
    act();
    EXPECT_EQ(0u, trace.trEnable(flags, false));
  }
  const std::string text = output.take(), last = "Tracing to file: STDOUT\n";
  return text.substr(text.find(last) + last.size());
}

}  // namespace support

#endif  // TESTS_SUPPORT_TRACED_H
