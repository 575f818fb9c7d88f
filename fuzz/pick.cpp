// pick.cpp: answers to the pick list, judged by a line of marks with a sign for each entry, "+" if
// it is picked; and the part of a line that fits on the screen.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "utility/utpick.h"

namespace {

using fuzz::hold;

// ProcessAnswer is given 17 entries; the three after them must be out of its reach.
constexpr std::size_t kObjects = 20, kCount = 17;

char markOf(bool picked) { return picked ? '+' : '-'; }

std::string marksOf(const ObjectList& list) {
  std::string marks;
  for (const utZylObj_s* object = list.getFirst(); object != nullptr;
       object = list.getNext(object)) {
    marks += markOf(object->selected == 1);
  }
  return marks;
}

constexpr char kDigits[] = "0123456789";

// An answer of up to four digits toggles its entry; an empty one, or one without such an entry,
// changes nothing.
void checkSingleNumber(const std::string& answer, std::string marks, const std::string& after) {
  if (answer.size() > 4 || answer.find_first_not_of(kDigits) != answer.npos) return;
  const std::size_t number = std::strtoul(answer.c_str(), nullptr, 10);
  if (number >= 1 && number <= kCount) marks[number - 1] = markOf(marks[number - 1] == '-');
  hold(after == marks, "a number toggles its entry");
}

// An answer that is one range with a sign gives that sign to its entries; entry 0 is the first one.
void checkSignedRange(const std::string& answer, std::string marks, const std::string& after) {
  char from[5], to[5], sign[2], rest;
  if (std::sscanf(answer.c_str(), "%4[0-9]:%4[0-9]%1[+-]%c", from, to, sign, &rest) != 3) return;
  const std::size_t last = std::min(std::strtoul(to, nullptr, 10), kCount);
  for (std::size_t number = std::strtoul(from, nullptr, 10); number <= last; ++number) {
    marks[std::max<std::size_t>(number, 1) - 1] = sign[0];
  }
  hold(after == marks, "a signed range marks its entries");
}

// The first byte of the text is the offset of the window, its length gives the width.
void checkWindow(const char* text) {
  const std::size_t length = std::strlen(text), width = length % 99 + 1;
  const int offset = *text;
  std::vector<char> shown(width + 1);
  FitStringToScreenSize(shown.data(), text, offset, static_cast<int>(width));
  const bool outside = offset < 0 || static_cast<std::size_t>(offset) > length;
  const std::string expected = outside ? " " : text + offset;
  hold(shown.data() == expected.substr(0, width), "a window shows its part of the line");
}

}  // namespace

void fuzz::check(const std::string&, char* text) {
  ObjectList list;
  for (std::size_t i = 0; i < kObjects; ++i) {
    utZylObj_s object = {};
    object.selected = i % 3 == 0 ? 1 : 0;
    hold(list.addTail(object, 0) == 0, "there is memory");
  }
  const std::string before = marksOf(list), answer = text;
  ProcessAnswer(&list, text, kCount);
  const std::string after = marksOf(list);
  // An answer without a number can change the first entry only.
  const std::size_t reach = answer.find_first_of(kDigits) != answer.npos ? kCount : 1;
  hold(after.substr(reach) == before.substr(reach), "no answer reaches further than it can mean");
  checkSingleNumber(answer, before, after);
  checkSignedRange(answer, before, after);
  checkWindow(text);
}
