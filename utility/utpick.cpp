// utpick.cpp: the pick list, see utpick.h.
#include "utility/utpick.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/nfdate.h"
#include "common/ut/psterm.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"
#include "common/ut/utf8.h"
#include "utility/dialogue.h"

namespace {

constexpr int kAnswerSize = 255;
constexpr int kDefaultShift = 20;
constexpr int kFewestRows = 10;
constexpr int kFewestCols = 20;
constexpr int kWidestLine = 2048;

// The decimal number at the start of a text; 0 if there is none. Numbers too large for any list
// stay large instead of wrapping around.
long long readNumber(const char* text) { return std::strtoll(text, nullptr, 10); }

// ---- Marks --------------------------------------------------------------------------------------

using utility::PageNotes;
using utility::PickTotal;

void mark(utZylObj_s* entry, int mode, PickTotal* picked) {
  const bool before = entry->selected == 1;
  if (mode == kToggle) {
    entry->selected = before ? 0 : 1;
  } else if (mode == kPick || mode == kUnpick) {
    entry->selected = static_cast<std::uint32_t>(mode);
  }
  const bool after = entry->selected == 1;
  if (picked == nullptr || before == after) return;
  if (after) {
    picked->total.add(*entry);
    ++picked->added;
  } else {
    picked->total.remove(*entry);
    ++picked->removed;
  }
}

// One line for each number or range of an answer, not for each entry that the list does not have.
void traceOutOfRange(long long value) {
  TRACE(TR_ORCLEVEL0, " %s: Exit - Value out of range Value: %d\n\n", "pkHighlightEntry()",
        static_cast<int>(std::min<long long>(value, INT_MAX)));
}

// Marks from..to in one walk. Numbers past `count` are ignored; 0 means the first entry.
void markRange(ObjectList* list, long long from, long long to, unsigned count, int mode,
               PickTotal* picked) {
  const long long last = std::min<long long>(to, count);
  if (to > count) traceOutOfRange(to);
  if (from > count && picked != nullptr) ++picked->missing;
  if (from > last) return;
  long long position = std::max<long long>(from, 1);
  utZylObj_s* entry = list->elementAt(static_cast<std::size_t>(position));
  if (entry != nullptr && from < 1) mark(entry, mode, picked);  // entry 0 is the first one
  for (; entry != nullptr && position <= last; ++position) {
    mark(entry, mode, picked);
    if (position < last) entry = list->getNext(entry);
  }
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
                      PickTotal* picked) {
  if (index > count) {
    traceOutOfRange(index);
    return;
  }
  utZylObj_s* entry = nullptr;
  gotoListElement(list, &entry, index);
  if (entry != nullptr) mark(entry, mode, picked);
}

namespace {

// One item of an answer: a number and the character that is taken for the delimiter after it.
struct AnswerItem {
  long long number;
  char delimiter;
};

// Splits an answer into its items. The delimiter's place is computed, assuming one delimiter after
// each number and none before the first; runs of delimiters shift it. Kept on purpose, pinned by
// PickList.AppliesEveryFormOfAnswer.
std::vector<AnswerItem> splitAnswer(const char* answer) {
  static constexpr char kSeparators[] = " +-:,\t\n";
  std::vector<AnswerItem> items;
  std::size_t position = 0;
  for (const char* token = answer + std::strspn(answer, kSeparators); *token != '\0';
       token += std::strspn(token, kSeparators)) {
    const std::size_t length = std::strcspn(token, kSeparators);
    position += length + (items.empty() ? 0 : 1);
    items.push_back({readNumber(std::string(token, length).c_str()), answer[position]});
    token += length;
  }
  return items;
}

}  // namespace

void ProcessAnswer(CLinkedList<utZylObj_s>* list, const char* answer, unsigned count,
                   utility::PickTotal* picked) {
  long long rangeStart = -1, rangeEnd = -1;  // below 0: not given yet
  int mode = kPick;
  for (const auto [number, delimiter] : splitAnswer(answer)) {
    const bool sign = delimiter == '+' || delimiter == '-';
    if (!sign && delimiter != ':') {
      if (number >= 1 && number <= count) {
        pkHighlightEntry(list, static_cast<unsigned>(number), count, kToggle, picked);
        continue;
      }
      if (number > count) traceOutOfRange(number);
      if (picked != nullptr) ++picked->missing;
      continue;
    }
    if (sign) {
      mode = delimiter == '+' ? kPick : kUnpick;
      rangeEnd = number;
    }
    if (!sign || rangeStart < 0) rangeStart = number;
    markRange(list, rangeStart, rangeEnd, count, mode, picked);
    // Reset to 0, not to -1: a second signed item in one answer is read as a range from entry 1.
    // Kept on purpose, pinned by PickList.AppliesEveryFormOfAnswer.
    if (sign) rangeStart = rangeEnd = 0;
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

// What the screen's window shows of a text. The window counts bytes; a character that it would cut
// in two is left out.
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

// Prints a line cut to the screen.
void printFitted(const std::string& text, int offset, int width) {
  nlprintf(msg::kLine, Fitted(text.c_str(), offset, width).text());
}

// The title says which list it is: orphans, or good backups as well.
std::string title(const utility::RunRecord* run, unsigned count) {
  std::string text = nlsprintf(msg::kListTitle);
  if (run == nullptr) return text;
  const bool orphans = run->list == utility::ListKind::kOrphans;
  return text += ": " + nlsprintf(orphans ? msg::kListOfOrphans : msg::kListOfAll,
                                  ut::formatNumber(count).text);
}

// The head of the page. True if there is an owner, which takes a line.
bool printHead(ObjectList* list, int cols, int hoffset, const std::string& titleText) {
  const utZylObj_s* first = list->getFirst();
  printFitted(titleText, 0, cols);
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

struct Lines {
  int count = 0;   // fillers included
  int picked = 0;  // of the entries among them
};

// The list lines, and fillers down to the ruler.
Lines printEntries(ObjectList* list, unsigned top, int counter, int cols, int hoffset,
                   unsigned count) {
  Lines lines;
  unsigned index = top;
  do {
    char text[kEntryTextSize];
    const int picked = pkFormatEntry(list, text, count, index);
    if (*text == '\0') break;
    const Fitted shown(text, hoffset, cols - 12);
    nlprintf(msg::kListLine, picked == 1 ? 'x' : ' ', index, shown.text());
    ++index;
    ++lines.count;
    lines.picked += picked;
    --counter;
  } while (counter > 4);
  for (; counter > 4; --counter, ++lines.count) nlprintf(msg::kLine, "        | ");
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
        // One column too many from 100 on: the ruler shifts by one column per hundred. Kept on
        // purpose, pinned by PickList.ScrollsTextHeadingAndRulerTogether.
        if (c >= 100) c += 2;
      }
    }
    ++c;
  }
  nlprintf(msg::kText, "        ");
  printFitted(ruler, 0, cols - 8);
}

std::string number(std::uint64_t value) { return ut::formatNumber(value).text; }

// What the last answer did; empty if there is nothing to say.
std::string lastAnswer(const PageNotes& notes) {
  if (notes.tooLong) return nlsprintf(msg::kStateTooLong);
  const PickTotal& picked = notes.picked;
  std::string text;
  if (picked.added > 0 || picked.removed > 0) {
    text = nlsprintf(msg::kStateChanged, number(picked.added), number(picked.removed));
  }
  if (picked.missing == 0) return text;
  return text += (text.empty() ? "" : ", ") + nlsprintf(msg::kStateNoEntry);
}

// The third help line: what ends the list, then what there is to know, by importance. What does not
// fit is left out whole, from the right.
std::string stateLine(const PageNotes& notes, int pickedHere, int cols) {
  const utility::ObjectTotal& picked = notes.picked.total;
  std::vector<std::string> parts = {
      nlsprintf(msg::kStatePicked, number(picked.count), ut::formatSize(picked.bytes).text)};
  const utility::RunRecord* run = notes.run;
  if (run != nullptr && run->doubts.size() == 1) parts.push_back(nlsprintf(msg::kStateDoubt));
  if (run != nullptr && run->doubts.size() > 1) {
    parts.push_back(nlsprintf(msg::kStateDoubts, number(run->doubts.size())));
  }
  parts.push_back(lastAnswer(notes));
  const std::uint64_t elsewhere = picked.count - static_cast<std::uint64_t>(pickedHere);
  if (elsewhere > 0) parts.push_back(nlsprintf(msg::kStateElsewhere, number(elsewhere)));
  if (run != nullptr && run->deleted.count > 0) {
    parts.push_back(nlsprintf(msg::kStateDeleted, number(run->deleted.count),
                              ut::formatSize(run->deleted.bytes).text));
  }
  std::string line = nlsprintf(msg::kPickHelpState);
  for (const std::string& part : parts) {
    if (part.empty()) continue;
    if (ut::columns(line) + 2 + ut::columns(part) > static_cast<std::size_t>(cols)) break;
    line += "  " + part;
  }
  return line;
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
                unsigned count, const utility::PageNotes* notes) {
  PageNotes counted;
  if (notes == nullptr) counted.picked.total = utility::summarizePicks(*list).total;
  const PageNotes& shown = notes != nullptr ? *notes : counted;
  psClearScrn();
  const bool withOwner = printHead(list, cols, hoffset, title(shown.run, count));
  const int available = rows - (withOwner ? 3 : 2);
  const Lines lines = printEntries(list, top, available - 3, cols, hoffset, count);
  printRuler(cols, hoffset);
  printFitted(nlsprintf(msg::kPickHelpMarks), 0, cols);
  printFitted(nlsprintf(msg::kPickHelpMoves), 0, cols);
  printFitted(stateLine(shown, lines.picked, cols), 0, cols);
  nlprintf(msg::kPickPrompt);
  std::fflush(stdout);
  return lines.count;
}

std::chrono::seconds utility::pauseAtEndOfInput(unsigned ends) {
  if (ends < 2) return std::chrono::seconds(0);
  constexpr unsigned kLongest = 60;
  return std::chrono::seconds(ends < 8 ? 1u << (ends - 2) : kLongest);
}

// ---- Commands -----------------------------------------------------------------------------------

namespace {

// One run of the pick list.
class PickScreen {
 public:
  PickScreen(ObjectList* list, unsigned count, const utility::RunRecord* run)
      : list_(list), count_(count) {
    notes_.run = run;
    psGetScreenSize(&rows_, &cols_);
  }

  int run() {
    while (cols_ >= kFewestCols && rows_ >= kFewestRows) {
      pageSize_ = DisplayList(list_, static_cast<unsigned>(top_), rows_ - 1, cols_, hoffset_,
                              count_, &notes_);
      char answer[kAnswerSize];
      const ut::ReadResult result = ReadAnswer(answer, sizeof answer);
      noteEnd(result == ut::ReadResult::kEnd);
      PickTotal& picked = notes_.picked;
      picked.added = picked.removed = picked.missing = 0;
      notes_.tooLong = result == ut::ReadResult::kCut;
      if (notes_.tooLong) {
        // Half an answer could mark what was not meant, so the page is just drawn again.
        TRACE(TR_ORCLEVEL0, " %s: answer too long, ignored\n", kFunction);
      } else {
        const int end = act(answer);
        if (end >= 0) return end;
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

  // Waits before the next page if the input has ended, and says so once. No handler is installed
  // here, so that a signal ends the wait together with the program.
  void noteEnd(bool ended) {
    ends_ = ended ? std::min(ends_ + 1, 100u) : 0;
    if (ends_ < 2) return;
    if (!std::exchange(endSaid_, true)) {
      std::fprintf(stderr, "%s\n", nlsprintf(msg::kInputEnded).c_str());
    }
    std::this_thread::sleep_for(utility::pauseAtEndOfInput(ends_));
  }

  // Carries out one answer. Returns the result of the list, or kGoOn.
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
        markRange(list_, 1, count_, count_, kPick, &notes_.picked);
        break;
      case '-':
        markRange(list_, 1, count_, count_, kUnpick, &notes_.picked);
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
        ProcessAnswer(list_, answer, count_, &notes_.picked);
    }
    return kGoOn;
  }

  bool moreBelow() const { return top_ + pageSize_ - 1 < count_; }

  void goTo(long long position) {
    if (position >= 1 && position <= count_) {
      top_ = position;
    } else {
      ++notes_.picked.missing;
    }
  }

  void shift(long long columns) {
    columns = std::clamp<long long>(columns, -kMaxOffset, kMaxOffset);
    hoffset_ = static_cast<int>(std::clamp<long long>(hoffset_ + columns, 0, kMaxOffset));
  }

  // The number after a command letter, or `absent`.
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
  unsigned ends_ = 0;     // how many answers in a row were the end of the input
  bool endSaid_ = false;  // and that it was said
  PageNotes notes_;       // nothing is picked at first: pkInitEntries has cleared all marks
};

}  // namespace

int pkPickHandler(CLinkedList<utZylObj_s>* list, const utility::RunRecord* run) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "pkPickHandler()");
  const unsigned count = pkInitEntries(list);
  TRACE(TR_ORCLEVEL2, " %s: Number of files in linked list: %d\n\n", "pkPickHandler()", count);
  if (count == 0) {
    TRACE(TR_ORCLEVEL1, " %s: Exit - no file PICK list\n\n", "pkPickHandler()");
    return kPickCancelled;
  }
  return PickScreen(list, count, run).run();
}
