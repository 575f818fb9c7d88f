// options.cpp: the options file. A value that was read, written as an options file of its own,
// reads the same, also when it is looked up alone.
#include "agent/optfile.h"
#include "agent/parser2.h"
#include "fuzz/fuzz.h"

// In the order of the context's texts.
static constexpr char kKeywords[] =
    "VLTI_DIR VLTI_LOG VLTI_ORC_DIR VLTI_ORC_CONFIG VEXO_AVG_SIZE VEXO_FS VEXO_NODE VEXO_OWNER "
    "VEXO_PSWDPATH VEXO_TRACE_MAX VEXO_TRACE_FILE VEXO_TRACE_FLAGS VEXO_MGMT_CLASS_2 "
    "VEXO_MGMT_CLASS_3 VEXO_MGMT_CLASS_4 VEXO_NUM_BUFFERS VEXO_DATE_FMT VEXO_TIME_FMT VEXO_NUM_FMT "
    "VEXO_LANGUAGE VEXO_TEST_FLAGS VEXO_ENABLESCRIPTINPUT";

void fuzz::check(const std::string& input, char*) {
  orcObj_t orc[2] = {};  // as read from the input, and again
  std::string bytes = input, keyword;
  const auto open = [&] { return ut::FilePtr(::fmemopen(bytes.data(), bytes.size(), "r")); };
  [[maybe_unused]] const auto rc = vexoParseOptionFile(orc, open().get(), "fuzz");
  std::istringstream keywords(kKeywords);
  for (const char* text = orc[0].VLTI_DIR; keywords >> keyword; text += kOptionSize) {
    if (*text == '\0') continue;
    const bool raw = keyword == "VEXO_TEST_FLAGS", quotes = std::strchr(text, '"') != nullptr;
    // Only a quote can have kept white space in front of a value.
    bytes = keyword + (!raw && std::strchr(" \t\v\f\r", *text) ? " \"" : " ") + text + "\n";
    hold(vexoParseOptionFile(orc + 1, open().get(), "fuzz") == 0, "what was read is readable");
    hold(!std::strcmp(text + sizeof orc[0], text), "a value reads as itself");
    char value[kOptionSize] = "";
    const bool found = vexoGetOption(open().get(), keyword.c_str(), value) == 0;
    hold(raw || (found && !quotes && !std::strcmp(value, text)), "a value is clean and found");
  }
}
