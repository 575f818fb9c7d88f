// options.cpp: the options file. A value that was read must read the same when it is written as an
// options file of its own, and when its keyword is looked up alone.
#include "agent/optfile.h"
#include "agent/parser2.h"
#include "fuzz/fuzz.h"

namespace {

ut::FilePtr opened(std::string& bytes) {
  return ut::FilePtr(::fmemopen(bytes.data(), bytes.size(), "r"));
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  orcObj_t orc = {};
  std::string bytes = input;
  // What comes before a line in error has been read; it is checked whatever the result is.
  [[maybe_unused]] const unsigned short rc = vexoParseOptionFile(&orc, opened(bytes).get(), "fuzz");
  // All are read alike, but VEXO_TEST_FLAGS, which is taken as it is.
  for (const auto& [keyword, member] : {std::pair("VLTI_DIR", &orcObj_t::VLTI_DIR),
                                        {"VEXO_NODE", &orcObj_t::VEXO_NODE},
                                        {"VEXO_TRACE_FLAGS", &orcObj_t::VEXO_TRACE_FLAGS}}) {
    const std::string value = orc.*member;
    if (value.empty()) continue;
    // A value that begins with white space was in quotes.
    const bool quoted = std::strchr(" \t\v\f\r", value[0]) != nullptr;
    std::string file = keyword + std::string(quoted ? " \"" : " ") + value + "\n";
    orcObj_t again = {};
    hold(vexoParseOptionFile(&again, opened(file).get(), "fuzz") == 0, "what was read is readable");
    char found[kOptionSize] = "";
    hold(vexoGetOption(opened(file).get(), keyword, found) == 0, "a keyword is found");
    hold(again.*member == value && found == value, "a value reads as itself");
  }
}
