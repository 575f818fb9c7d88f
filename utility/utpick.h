// utpick.h: the pick list: a page of backup objects at a time, marks, and one-line commands.
//
// It works on the list itself: an object is picked when its `selected` is 1. There is no cursor
// addressing; after each command the terminal is cleared and the page written again. A command
// visits only the entries that it marks, a page only those that it shows: entries are found by
// their position at once (CLinkedList::elementAt), and a running total of what is picked is kept.
#ifndef UTILITY_UTPICK_H
#define UTILITY_UTPICK_H

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "utility/runrecord.h"
#include "utility/zylobj.h"

namespace utility {

// What is picked, kept up to date while entries are marked, and what the last answer did.
struct PickTotal {
  ObjectTotal total;
  std::uint64_t added = 0, removed = 0;  // entries that the last answer picked and unpicked
  std::uint64_t missing = 0;             // its items that name no entry
};

// What a page says besides its entries.
struct PageNotes {
  PickTotal picked;
  const RunRecord* run = nullptr;  // null: nothing is known about the list
  bool tooLong = false;            // the last answer was ignored
};

// How long to wait before the next page when the input has ended `ends` times in a row: not at all
// after the first time, then a second, growing to a minute. A terminal may go on after its end of
// input, so the list goes on as well, but not at full speed.
std::chrono::seconds pauseAtEndOfInput(unsigned ends);

}  // namespace utility

inline constexpr int kPickCancelled = 300;

// How an entry is marked.
inline constexpr int kUnpick = 0;
inline constexpr int kPick = 1;
inline constexpr int kToggle = 2;

// Longest horizontal offset, in columns.
inline constexpr int kMaxOffset = 1054;

// Room for the text of one entry, with the terminator.
inline constexpr std::size_t kEntryTextSize = 1400;

// Shows the list until the user confirms (0) or cancels (300); 300 as well if the list is empty or
// the terminal too small. Only on 0 may the caller act on the marks. All marks are cleared first.
// `run`, which may be null, says which list it is, and has the doubts and what was deleted so far.
[[nodiscard]] int pkPickHandler(CLinkedList<utZylObj_s>* list,
                                const utility::RunRecord* run = nullptr);

// Clears every mark and returns the number of entries.
unsigned pkInitEntries(CLinkedList<utZylObj_s>* list);

// Marks the entry at `index` (from 1; 0 is taken as 1) by mode. An index past `count` and an
// unknown mode change nothing. `picked`, if not null, is updated.
void pkHighlightEntry(CLinkedList<utZylObj_s>* list, unsigned index, unsigned count, int mode,
                      utility::PickTotal* picked = nullptr);

// Writes the text of the entry at `index` into `out` (kEntryTextSize bytes) and returns 1 if it is
// picked, else 0. Past `count` the text is empty.
int pkFormatEntry(CLinkedList<utZylObj_s>* list, char* out, unsigned count, unsigned index);

// Draws one page, `rows` (at least 9) by `cols` (at least 20), with the entry `top` first, and
// returns how many list lines it has, fillers included. With null `notes` the picks are counted.
int DisplayList(CLinkedList<utZylObj_s>* list, unsigned top, int rows, int cols, int hoffset,
                unsigned count, const utility::PageNotes* notes = nullptr);

// The horizontal window of a line: at most `width` bytes of `in` from `offset` on. A line that is
// scrolled past its end is one blank. `out` has room for width + 1 bytes, at least 2. A null
// `out` does nothing, a null `in` gives the empty text.
void FitStringToScreenSize(char* out, const char* in, int offset, int width);

// Applies a line of entry numbers and ranges: "n" toggles, "n+" picks, "n-" unpicks, "a:b+" and
// "a:b-" do so for a range; items are separated by blanks or commas. `picked`, if not null,
// is updated.
void ProcessAnswer(CLinkedList<utZylObj_s>* list, const char* answer, unsigned count,
                   utility::PickTotal* picked = nullptr);

// Sets `*element` to the entry at `index` (0 is taken as 1), or to null past the end.
void gotoListElement(CLinkedList<utZylObj_s>* list, utZylObj_s** element, unsigned index);

#endif  // UTILITY_UTPICK_H
