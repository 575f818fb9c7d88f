// options.cpp: the options file. A value that was read must read the same when it is written as an
// options file of its own, and when its keyword is looked up alone.
#include "agent/optfile.h"
#include "agent/parser2.h"
#include "fuzz/fuzz.h"

namespace {

using fuzz::hold;

struct Option {
  const char* keyword;
  char (orcObj_t::*value)[kOptionSize];
};

// All of them are read alike; VEXO_TEST_FLAGS alone is taken as it is.
constexpr Option kOptions[] = {
    {"VLTI_DIR", &orcObj_t::VLTI_DIR},
    {"VLTI_ORC_DIR", &orcObj_t::VLTI_ORC_DIR},
    {"VEXO_FS", &orcObj_t::VEXO_FS},
    {"VEXO_NODE", &orcObj_t::VEXO_NODE},
    {"VEXO_TRACE_FILE", &orcObj_t::VEXO_TRACE_FILE},
    {"VEXO_TRACE_FLAGS", &orcObj_t::VEXO_TRACE_FLAGS},
    {"VEXO_DATE_FMT", &orcObj_t::VEXO_DATE_FORMAT},
    {"VEXO_TEST_FLAGS", &orcObj_t::VEXO_TEST_FLAGS},
    {"VEXO_ENABLESCRIPTINPUT", &orcObj_t::VEXO_ENABLESCRIPTINPUT},
};

ut::FilePtr opened(std::string& bytes) {
  return ut::FilePtr(::fmemopen(bytes.data(), bytes.size(), "r"));
}

void checkValue(const Option& option, const std::string& value) {
  const bool raw = option.value == &orcObj_t::VEXO_TEST_FLAGS;
  // A value that begins with white space was in quotes; a raw one is taken as it is.
  const bool quoted = !raw && std::strchr(" \t\v\f\r", value[0]) != nullptr;
  std::string file = std::string(option.keyword) + (quoted ? " \"" : " ") + value + "\n";
  orcObj_t again = {};
  hold(vexoParseOptionFile(&again, opened(file).get(), "fuzz") == 0, "what was read is readable");
  hold(again.*option.value == value, "a value reads as itself");
  if (raw) return;
  hold(value.find('"') == value.npos, "a value has no quotes");
  char found[kOptionSize] = "";
  hold(vexoGetOption(opened(file).get(), option.keyword, found) == 0, "a keyword is found");
  hold(found == value, "a keyword has its value");
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  orcObj_t orc = {};
  std::string bytes = input;
  // What comes before a line in error has been read; it is checked whatever the result is.
  [[maybe_unused]] const unsigned short rc = vexoParseOptionFile(&orc, opened(bytes).get(), "fuzz");
  for (const Option& option : kOptions) {
    const std::string value = orc.*option.value;
    if (!value.empty()) checkValue(option, value);
  }
}
