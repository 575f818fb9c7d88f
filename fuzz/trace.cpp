// trace.cpp: the lists of trace classes and test flags. A list does what its words do one by one,
// and a word switches its own flag.
#include "common/ut/agttrc.h"
#include "fuzz/fuzz.h"

namespace {

using fuzz::hold;

struct Flag {
  const char* name;
  unsigned char* value;
};

constexpr Flag kFlags[] = {
#define TRACE_CLASS(name) {#name, &TR_##name},
#define TEST_FLAG(name) {#name, &TEST_##name},
#include "common/ut/trcclass.def"
    {"ALL", &TR_ALL}};

// The flags as a line of signs; they are off afterwards.
std::string takeFlags() {
  std::string signs;
  for (const Flag& flag : kFlags) {
    signs += *flag.value == 0 ? '-' : '+';
    *flag.value = 0;
  }
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
    const bool on = *word != '-';
    trace.trTestEnable(word);
    if (!on) ++word;
    // Of two minus signs only the first reverses the word; what is left must not be reversed again.
    if (on || *word != '-') trace.trEnable(word, on);
    for (const Flag& flag : kFlags) {
      hold(::strcasecmp(flag.name, word) != 0 || *flag.value == on, "a word switches its flag");
    }
  }
  hold(atOnce == takeFlags(), "a list does what its words do");
}
