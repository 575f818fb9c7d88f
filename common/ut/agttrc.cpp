// agttrc.cpp: the agent's trace layer, see agttrc.h.
#include "common/ut/agttrc.h"

#include <bitset>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
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

using Classes = std::bitset<std::size(vexTrcClassTable)>;

// What a list of words does to the classes, each at most once: a later word overrides an earlier.
struct Change {
  Classes on, off;

  void set(const Classes& classes, bool toOn) {
    (toOn ? on : off) |= classes;
    (toOn ? off : on) &= ~classes;
  }
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
  static constexpr char kSeparators[] = " ,\t\r\n\"'";
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

bool switchOn(std::string_view name) {
  const FlagRow* row = findRow(vexTrcClassTable, name);
  if (row != nullptr) *row->flag = 1;
  return row != nullptr;
}

void collect(std::string_view word, bool on, Change* change);

// What the words of an aggregate do, in their order: "ALL -NLS".
Change changeOf(const AggregateRow& row) {
  Change change;
  forEachWord(row.words, true, [&](std::string_view word, bool on) { collect(word, on, &change); });
  return change;
}

// Adds what one word does. With a minus an aggregate takes away the classes that it would leave on;
// those that it leaves off, SERVICE's NLS for one, are not touched.
void collect(std::string_view word, bool on, Change* change) {
  if (const FlagRow* row = findRow(vexTrcClassTable, word)) {
    change->set(Classes().set(static_cast<std::size_t>(row - vexTrcClassTable)), on);
  }
  const AggregateRow* row = findRow(vexAgrClassTable, word);
  if (row == nullptr) return;
  const Change nested = changeOf(*row);
  change->set(nested.on, on);
  if (on) change->set(nested.off, false);
}

// The lines too numerous for any class are asked for by their own two words only, not by a word
// that contains one of them.
bool isEverything(std::string_view word) { return word == "ALL" || word == "DETAILED"; }

void switchWord(std::string_view word, bool on) {
  Change change;
  collect(word, on, &change);
  for (std::size_t i = 0; i < change.on.size(); ++i) {
    if (change.on[i]) *vexTrcClassTable[i].flag = 1;
    if (change.off[i]) *vexTrcClassTable[i].flag = 0;
  }
  if (isEverything(word)) TR_ALL = on ? 1 : 0;
}

template <typename IsKnown>
std::string unknownWords(const char* flags, IsKnown isKnown) {
  std::string unknown;
  forEachWord(flags, true, [&](std::string_view word, bool) {
    if (isKnown(word)) return;
    if (!unknown.empty()) unknown += ' ';
    unknown += word.empty() ? "-" : word;
  });
  return unknown;
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
  if (!switchOn("PID") || !switchOn("TID")) return ut::kTraceClassUnknown;
  if (created_ != 0) return created_;
  const std::uint32_t rc = ut::openTrace(fileName);
  if (rc == 0 && banner != 0) writeBanner();
  return rc;
}

std::uint32_t VEXCTrace::trEnable(const char* flags, bool on) {
  forEachWord(flags, on, switchWord);
  return created_;
}

void VEXCTrace::trTestEnable(const char* flags) {
  forEachWord(flags, true, [](std::string_view word, bool on) {
    if (const FlagRow* row = findRow(vexClassTable, word)) *row->flag = on ? 1 : 0;
  });
}

std::string ut::unknownTraceWords(const char* flags) {
  return unknownWords(flags, [](std::string_view word) {
    return findRow(vexTrcClassTable, word) != nullptr || findRow(vexAgrClassTable, word) != nullptr;
  });
}

std::string ut::unknownTestWords(const char* flags) {
  return unknownWords(
      flags, [](std::string_view word) { return findRow(vexClassTable, word) != nullptr; });
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
  std::size_t length = static_cast<std::size_t>(used);
  length += ut::formatTrace(text + used, sizeof text - length, lineEnds_, format, arguments);
  va_end(arguments);
  if (length > ut::kMaxTraceLine) {
    length = ut::kMaxTraceLine;
    text[length - 1] = '\n';  // a cut line is still a line
  }
  ut::writeTraceLine(text, length);
  errno = savedErrno;
}
