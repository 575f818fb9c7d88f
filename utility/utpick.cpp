// utpick.cpp: the pick list, see utpick.h.
#include "utility/utpick.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/ascii.h"
#include "common/ut/nfdate.h"
#include "common/ut/psterm.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "common/ut/utf8.h"
#include "utility/syncdb.h"

namespace {

constexpr int kAnswerSize = 255;
constexpr int kDefaultShift = 20;
constexpr int kFewestRows = 10;
constexpr int kFewestCols = 20;
constexpr int kWidestLine = 2048;

// A decimal number at the start of a text; unreadable ones are 0, and what no list can hold is
// kept large instead of wrapping round.
long long readNumber(const char* text) { return std::strtoll(text, nullptr, 10); }

// ---- Marks --------------------------------------------------------------------------------------

using utility::Picked;

// Adds the entry's part to what is picked, before and after its mark is changed.
void take(const utZylObj_s& entry, Picked* picked) {
  if (entry.selected != 1) return;
  ++picked->count;
  picked->bytes += api::toNumber(entry.sizeEstimate);
}
void drop(const utZylObj_s& entry, Picked* picked) {
  if (entry.selected != 1) return;
  --picked->count;
  picked->bytes -= api::toNumber(entry.sizeEstimate);
}

void mark(utZylObj_s* entry, int mode, Picked* picked) {
  if (picked != nullptr) drop(*entry, picked);
  if (mode == kToggle) {
    entry->selected = entry->selected == 1 ? 0 : 1;
  } else if (mode == kPick || mode == kUnpick) {
    entry->selected = static_cast<std::uint32_t>(mode);
  }
  if (picked != nullptr) take(*entry, picked);
}

// Marks from..to with one walk. Numbers past `count` are ignored; 0 stands for the first entry.
void markRange(ObjectList* list, long long from, long long to, unsigned count, int mode,
               Picked* picked) {
  const long long last = std::min<long long>(to, count);
  if (from > last) return;
  long long position = std::max<long long>(from, 1);
  utZylObj_s* entry = list->elementAt(static_cast<std::size_t>(position));
  if (entry != nullptr && from < 1) mark(entry, mode, picked);  // entry 0 is the first one
  for (; entry != nullptr && position <= last; ++position) {
    mark(entry, mode, picked);
    if (position < last) entry = list->getNext(entry);
  }
}

Picked countPicked(const ObjectList& list) {
  Picked picked;
  for (const utZylObj_s* entry = list.getFirst(); entry != nullptr; entry = list.getNext(entry)) {
    take(*entry, &picked);
  }
  return picked;
}

}  // namespace

unsigned pkInitEntries(CLinkedList<utZylObj_s>* list) {
  unsigned count = 0;
  for (utZylObj_s* entry = list->getFirst(); entry != nullptr; entry = list->getNext(entry)) {
    entry->selected = 0;
    ++count;
  }
  return count;
}

void gotoListElement(CLinkedList<utZylObj_s>* list, utZylObj_s** element, unsigned index) {
  *element = list->elementAt(index);
}

void pkHighlightEntry(CLinkedList<utZylObj_s>* list, unsigned index, unsigned count, int mode,
                      utility::Picked* picked) {
  if (index > count) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - Value out of range Value: %d\n\n", "pkHighlightEntry()",
          index);
    return;
  }
  utZylObj_s* entry = nullptr;
  gotoListElement(list, &entry, index);
  if (entry != nullptr) mark(entry, mode, picked);
}

void ProcessAnswer(CLinkedList<utZylObj_s>* list, const char* answer, unsigned count,
                   utility::Picked* picked) {
  static constexpr char kSeparators[] = " +-:,\t\n";
  long long rangeStart = -1, rangeEnd = -1;
  int mode = kPick;
  std::size_t position = 0;
  bool first = true;
  for (const char* token = answer + std::strspn(answer, kSeparators); *token != '\0';
       token += std::strspn(token, kSeparators)) {
    const std::size_t length = std::strcspn(token, kSeparators);
    const long long number = readNumber(std::string(token, length).c_str());
    // Where the delimiter stands is reckoned, not searched: one delimiter after each token and none
    // in front. With runs of delimiters the place drifts; users know what their lines do, it stays.
    position += length + (first ? 0 : 1);
    first = false;
    const char delimiter = answer[position];
    token += length;
    if (delimiter == ':') {
      rangeStart = number;
    } else if (delimiter == '+' || delimiter == '-') {
      mode = delimiter == '+' ? kPick : kUnpick;
      rangeEnd = number;
      if (rangeStart < 0) rangeStart = number;
    } else {
      if (number >= 1 && number <= count) {
        pkHighlightEntry(list, static_cast<unsigned>(number), count, kToggle, picked);
      }
      continue;
    }
    markRange(list, rangeStart, rangeEnd, count, mode, picked);
    // To 0, not to -1: a second signed item of the line starts at the first entry. Users know that
    // too, it stays.
    if (delimiter != ':') rangeStart = rangeEnd = 0;
  }
}

// ---- The page -----------------------------------------------------------------------------------

void FitStringToScreenSize(char* out, const char* in, int offset, int width) {
  if (out == nullptr) {
    TRACE(TR_ORCLEVEL1, " %s: Exit - String is NULL\n\n", "FitStringToScreenSize()");
    return;
  }
  *out = '\0';
  if (in == nullptr) return;
  const std::size_t length = std::strlen(in);
  if (offset < 0 || static_cast<std::size_t>(offset) > length) {
    out[0] = ' ';
    out[1] = '\0';
    TRACE(TR_ORCLEVEL1, " %s: Exit - short string with a blank\n\n", "FitStringToScreenSize()");
    return;
  }
  ut::ignoreResult(ut::copyText(out, static_cast<std::size_t>(std::max(width, 0)) + 1, in + offset),
                   "the window cuts on purpose");
}

namespace {

int formatEntry(const utZylObj_s& entry, char* out) {
  const nfDate date = api::toNfDate(entry.insDate);
  const std::string text =
      nlsprintf(msg::kListEntry, ut::formatDate(date).text, ut::formatTime(date).text,
                ut::formatSize(api::toNumber(entry.sizeEstimate)).text, entry.name);
  ut::ignoreResult(ut::copyText(out, kEntryTextSize, text), "a screen line is shorter");
  TRACE(TR_ORCLEVEL2, " %s: ObjectName = '%s'\n", "pkFormatEntry()", entry.name);
  if (entry.selected == 1) {
    TRACE(TR_ORCLEVEL1, " %s: Element is picked\n", "pkFormatEntry()");
  } else {
    TRACE(TR_ORCLEVEL1, " %s: Element is not picked\n", "pkFormatEntry()");
  }
  return entry.selected == 1 ? 1 : 0;
}

// What the screen's window shows of a text. The window counts bytes; of a character that it tears,
// nothing is left.
class Fitted {
 public:
  Fitted(const char* text, int offset, int width) {
    FitStringToScreenSize(line_, text, offset, std::min(width, kWidestLine - 1));
    while (offset > 0 && ut::isContinuation(*start_)) ++start_;
    start_[ut::withoutTornEnd(start_).size()] = '\0';
  }
  Fitted(const Fitted&) = delete;
  Fitted& operator=(const Fitted&) = delete;

  const char* text() const { return start_; }

 private:
  char line_[kWidestLine];
  char* start_ = line_;
};

// A line cut to the screen, through message 2.
void printFitted(const std::string& text, int offset, int width) {
  nlprintf(msg::kLine, Fitted(text.c_str(), offset, width).text());
}

// The head of the page. True when the owner took a line of its own.
bool printHead(ObjectList* list, int cols, int hoffset) {
  const utZylObj_s* first = list->getFirst();
  printFitted(nlsprintf(msg::kListTitle), 0, cols);
  printFitted(nlsprintf(msg::kNodeHeading, first == nullptr ? "" : first->node), 0, cols);
  const bool withOwner = first != nullptr && *first->owner != '\0';
  if (withOwner) printFitted(nlsprintf(msg::kOwnerHeading, first->owner), 0, cols);
  nlprintf(msg::kBlankLine);
  printFitted(nlsprintf(msg::kListHeading), hoffset, cols - 10);
  nlprintf(msg::kText, "        ");
  for (int i = 0; i < cols - 8; ++i) nlprintf(msg::kText, "-");
  nlprintf(msg::kBlankLine);
  return withOwner;
}

// The list lines, and fillers down to the ruler. Returns how many.
int printEntries(ObjectList* list, unsigned top, int counter, int cols, int hoffset,
                 unsigned count) {
  int lines = 0;
  unsigned index = top;
  do {
    char text[kEntryTextSize];
    const int picked = pkFormatEntry(list, text, count, index);
    if (*text == '\0') break;
    const Fitted shown(text, hoffset, cols - 12);
    nlprintf(msg::kListLine, picked == 1 ? 'x' : ' ', index, shown.text());
    ++index;
    ++lines;
    --counter;
  } while (counter > 4);
  for (; counter > 4; --counter, ++lines) nlprintf(msg::kLine, "        | ");
  return lines;
}

void printRuler(int cols, int hoffset) {
  std::string ruler;
  for (int c = hoffset; c - hoffset < cols;) {
    if (c % 10 != 0) {
      ruler += '-';
    } else {
      ruler += std::to_string(c);
      if (c >= 10) {
        ++c;
        // From 100 on one column too many: the ruler shifts by one a hundred. Users read it that
        // way, it stays.
        if (c >= 100) c += 2;
      }
    }
    ++c;
  }
  nlprintf(msg::kText, "        ");
  printFitted(ruler, 0, cols - 8);
}

void printHelp(const Picked& picked, unsigned count, int cols) {
  printFitted(nlsprintf(msg::kPickHelpMarks), 0, cols);
  printFitted(nlsprintf(msg::kPickHelpMoves), 0, cols);
  printFitted(nlsprintf(msg::kPickHelpState, ut::formatNumber(picked.count).text,
                        ut::formatNumber(count).text, ut::formatSize(picked.bytes).text),
              0, cols);
}

}  // namespace

int pkFormatEntry(CLinkedList<utZylObj_s>* list, char* out, unsigned count, unsigned index) {
  *out = '\0';
  if (index > count) return 0;
  utZylObj_s* entry = nullptr;
  gotoListElement(list, &entry, index);
  return entry == nullptr ? 0 : formatEntry(*entry, out);
}

int DisplayList(CLinkedList<utZylObj_s>* list, unsigned top, int rows, int cols, int hoffset,
                unsigned count, const utility::Picked* picked) {
  psClearScrn();
  const bool withOwner = printHead(list, cols, hoffset);
  const int available = rows - (withOwner ? 3 : 2);
  const int lines = printEntries(list, top, available - 3, cols, hoffset, count);
  printRuler(cols, hoffset);
  printHelp(picked == nullptr ? countPicked(*list) : *picked, count, cols);
  nlprintf(msg::kPickPrompt);
  std::fflush(stdout);
  return lines;
}

// ---- Commands -----------------------------------------------------------------------------------

namespace {

// One run of the pick list.
class PickScreen {
 public:
  PickScreen(ObjectList* list, unsigned count) : list_(list), count_(count) {
    psGetScreenSize(&rows_, &cols_);
  }

  int run() {
    while (cols_ >= kFewestCols && rows_ >= kFewestRows) {
      pageSize_ = DisplayList(list_, static_cast<unsigned>(top_), rows_ - 1, cols_, hoffset_,
                              count_, &picked_);
      char answer[kAnswerSize];
      if (ReadAnswer(answer, sizeof answer) == ut::ReadResult::kCut) {
        // Half of an answer could mark what was not meant; the page is simply drawn again.
        TRACE(TR_ORCLEVEL0, " %s: answer too long, ignored\n", kFunction);
      } else {
        const int result = act(answer);
        if (result >= 0) return result;
      }
      psGetScreenSize(&rows_, &cols_);
    }
    nlprintf(msg::kTerminalTooSmall);
    TRACE(TR_ORCLEVEL0, " %s: Exit - small screen size\n\n", kFunction);
    return kPickCancelled;
  }

 private:
  static constexpr char kFunction[] = "pkPickHandler()";
  static constexpr int kGoOn = -1;

  // Carries one answer out. Returns the result of the list, or kGoOn.
  int act(const char* answer) {
    char command[2] = {*answer, '\0'};
    ut::upperCase(command);
    const char* rest = answer + 1;
    switch (command[0]) {
      case 'O':
        TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
        return 0;
      case 'C':
      case 'Q':
        TRACE(TR_ORCLEVEL1, " %s: Exit - pick canceled\n\n", kFunction);
        return kPickCancelled;
      case '+':
        markRange(list_, 1, count_, count_, kPick, &picked_);
        break;
      case '-':
        markRange(list_, 1, count_, count_, kUnpick, &picked_);
        break;
      case 'T':
        top_ = 1;
        break;
      case 'B':
        if (moreBelow()) top_ = static_cast<long long>(count_) - pageSize_ + 1;
        break;
      case 'D':
        if (moreBelow()) top_ += pageSize_;
        break;
      case 'U':
        top_ = std::max<long long>(top_ - pageSize_, 1);
        break;
      case 'G':
        goTo(argument(rest, 0));
        break;
      case 'L':
        shift(-argument(rest, kDefaultShift));
        break;
      case 'R':
        shift(argument(rest, kDefaultShift));
        break;
      default:
        ProcessAnswer(list_, answer, count_, &picked_);
    }
    return kGoOn;
  }

  bool moreBelow() const { return top_ + pageSize_ - 1 < count_; }

  void goTo(long long position) {
    if (position >= 1 && position <= count_) top_ = position;
  }

  void shift(long long columns) {
    columns = std::clamp<long long>(columns, -kMaxOffset, kMaxOffset);
    hoffset_ = static_cast<int>(std::clamp<long long>(hoffset_ + columns, 0, kMaxOffset));
  }

  // The number behind a command letter, or `absent`.
  static long long argument(const char* rest, long long absent) {
    static constexpr char kSeparators[] = " :,\t\n";
    const char* token = rest + std::strspn(rest, kSeparators);
    if (*token == '\0') return absent;
    constexpr long long kFar = 1LL << 40;  // keeps the negation of the result within its type
    return std::clamp(readNumber(token), -kFar, kFar);
  }

  ObjectList* list_;
  const unsigned count_;
  int rows_ = 0, cols_ = 0;
  int pageSize_ = 0;
  long long top_ = 1;
  int hoffset_ = 0;
  Picked picked_;  // nothing at first: pkInitEntries has cleared all marks
};

}  // namespace

int pkPickHandler(CLinkedList<utZylObj_s>* list) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "pkPickHandler()");
  const unsigned count = pkInitEntries(list);
  TRACE(TR_ORCLEVEL2, " %s: Number of files in linked list: %d\n\n", "pkPickHandler()", count);
  if (count == 0) {
    TRACE(TR_ORCLEVEL1, " %s: Exit - no file PICK list\n\n", "pkPickHandler()");
    return kPickCancelled;
  }
  return PickScreen(list, count).run();
}
