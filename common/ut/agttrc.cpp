// agttrc.cpp: the agent's trace layer, see agttrc.h.
#include "common/ut/agttrc.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "common/ut/ascii.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

VEXCTrace* trcClass = nullptr;

namespace {

constexpr int kAgentTraceClient = 9;

struct FlagRow {
  std::string_view name;
  unsigned char* flag;
};

struct AggregateRow {
  std::string_view name;
  const char* words;
};

constexpr FlagRow vexTrcClassTable[] = {
#define TRACE_CLASS(name) {#name, &TR_##name},
#include "common/ut/trcclass.def"
};

constexpr AggregateRow vexAgrClassTable[] = {
#define TRACE_AGGREGATE(name, words) {#name, words},
#include "common/ut/trcclass.def"
};

constexpr FlagRow vexClassTable[] = {
#define TEST_FLAG(name) {#name, &TEST_##name},
#include "common/ut/trcclass.def"
};

template <typename Rows>
auto findRow(const Rows& rows, std::string_view name) {
  for (const auto& row : rows) {
    if (row.name == name) return &row;
  }
  return static_cast<decltype(&rows[0])>(nullptr);
}

// Calls act(word, on) for each word of a list. The word is passed in capitals, and "-" reverses
// `on`. A word longer than any name is passed on cut: it names nothing either way.
template <typename Action>
void forEachWord(const char* list, bool on, Action act) {
  static constexpr char kSeparators[] = " ,\t";
  for (list += std::strspn(list, kSeparators); *list != '\0';
       list += std::strspn(list, kSeparators)) {
    const std::size_t length = std::strcspn(list, kSeparators);
    const bool minus = *list == '-';
    char word[64];
    ut::ignoreResult(ut::copyText(word, std::string_view(list + minus, length - minus)),
                     "names are shorter");
    ut::upperCase(word);
    act(std::string_view(word), on != minus);
    list += length;
  }
}

bool switchClass(std::string_view name, bool on) {
  const FlagRow* row = findRow(vexTrcClassTable, name);
  if (row != nullptr) *row->flag = on ? 1 : 0;
  return row != nullptr;
}

// An aggregate is expanded in its place in the list, so a later word overrides an earlier one:
// "ALL -NLS". Switching an aggregate off reverses each of its own words as well, so "-SERVICE"
// switches NLS on. Kept on purpose, pinned by Trace.WordsSwitchClassesAndAggregates.
void switchWords(const char* list, bool on) {
  forEachWord(list, on, [](std::string_view word, bool wordOn) {
    switchClass(word, wordOn);
    if (word == "ALL") TR_ALL = wordOn ? 1 : 0;
    if (const AggregateRow* row = findRow(vexAgrClassTable, word)) switchWords(row->words, wordOn);
  });
}

void writeBanner() {
  VEXCTraceStatement statement;
  statement.initStatement(__FILE__, __LINE__);
  statement.write(
      "\n===========================================================\n"
      "Tracing started for:\n"
      "-----------------------------------------------------------\n"
      "       Application Client :   %s\n"
      "              VEX Version :   %d.%d.%d.%d\n"
      "        Base Code Version :   Version %d, Release %d, Level%d.%d %s\n"
      "          Build Date/Time :   %s at %s\n"
      "===========================================================\n",
      "VEX Oracle SUN", 8, 1, 13, 0, 8, 1, 13, 0, "vexosync", __DATE__, __TIME__);
}

}  // namespace

VEXCTrace::VEXCTrace() : created_(ut::createTrace(kAgentTraceClient, trTIDProc)) {}

VEXCTrace::~VEXCTrace() {
  trClose();
  ut::destroyTrace();
}

std::uint32_t VEXCTrace::trBegin(const char* fileName, int banner) {
  if (!switchClass("PID", true) || !switchClass("TID", true)) return ut::kTraceClassUnknown;
  if (created_ != 0) return created_;
  const std::uint32_t rc = ut::openTrace(fileName);
  if (rc == 0 && banner != 0) writeBanner();
  return rc;
}

std::uint32_t VEXCTrace::trEnable(const char* flags, bool on) {
  switchWords(flags, on);
  return created_;
}

void VEXCTrace::trTestEnable(const char* flags) {
  forEachWord(flags, true, [](std::string_view word, bool on) {
    if (const FlagRow* row = findRow(vexClassTable, word)) *row->flag = on ? 1 : 0;
  });
}

void VEXCTraceStatement::initStatement(const char* file, int line) {
  const char* slash = std::strrchr(file, '/');
  file_ = slash == nullptr ? file : slash + 1;
  line_ = line;
}

void VEXCTraceStatement::write(const char* format, ...) {
  if (state_ != 0 || !ut::traceIsOpen()) return;
  const int savedErrno = errno;  // callers trace between a failed call and the look at its errno
  char text[ut::kMaxTraceLine + 1];
  int used = 0;
  if (TR_PREFIX) {
    used = std::snprintf(text, sizeof text, "%-20s(%4u): ", file_, static_cast<unsigned>(line_));
  }
  va_list arguments;
  va_start(arguments, format);
  const int more =
      std::vsnprintf(text + used, sizeof text - static_cast<std::size_t>(used), format, arguments);
  va_end(arguments);
  if (more >= 0) {
    std::size_t length = static_cast<std::size_t>(used) + static_cast<std::size_t>(more);
    if (length > ut::kMaxTraceLine) {
      length = ut::kMaxTraceLine;
      text[length - 1] = '\n';  // a cut line is still a line
    }
    ut::writeTraceLine(text, length);
  }
  errno = savedErrno;
}
