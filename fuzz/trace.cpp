// trace.cpp: the lists of trace classes and test flags. A list does what its words do one by one,
// and a word switches its own flag.
#include "common/ut/trace.h"

#include "fuzz/fuzz.h"

static const std::pair<const char*, unsigned char*> kFlags[] = {
#define TRACE_CLASS(name) {#name, &TR_##name},
#define TEST_FLAG(name) {#name, &TEST_##name},
#include "common/ut/trcclass.def"
    {"ALL", &TR_ALL}};

void fuzz::check(const std::string&, char* text) {
  static VEXCTrace trace;
  std::string atOnce, oneByOne;
  trace.trEnable(text, true);
  trace.trTestEnable(text);
  for (const auto& row : kFlags) atOnce += "-+"[std::exchange(*row.second, 0)];
  for (char* word = std::strtok(text, " ,\t"); word; word = std::strtok(nullptr, " ,\t")) {
    const bool on = *word != '-';
    trace.trTestEnable(word);
    // Of two minus signs only the first is one; what is left must not be turned round again.
    if (word[0] != '-' || word[1] != '-') trace.trEnable(on ? word : ++word, on);
    for (const auto& [name, flag] : kFlags)
      hold(::strcasecmp(name, word) != 0 || *flag == on, "a word switches its flag");
  }
  for (const auto& row : kFlags) oneByOne += "-+"[std::exchange(*row.second, 0)];
  hold(atOnce == oneByOne, "a list does what its words do");
}
