// pick.cpp: answers to the pick list, judged by a line of marks; and the cut to the screen's width.
#include "fuzz/fuzz.h"
#include "utility/utpick.h"

void fuzz::check(const std::string&, char* text) {
  constexpr std::size_t kObjects = 20, kCount = 17;  // the last three are out of the answer's reach
  ObjectList list;
  std::string marks, wanted;
  for (std::size_t i = 0; i < kObjects; ++i) {
    utZylObj_s object = {};
    wanted += "-+"[object.selected = i % 3 == 0];
    hold(list.addTail(object, 0) == 0, "there is memory");
  }
  ProcessAnswer(&list, text, kCount);
  for (utZylObj_s* o = list.getFirst(); o; o = list.getNext(o)) marks += "-+"[o->selected];
  const std::size_t reach = std::strpbrk(text, "0123456789") ? kCount : 1;
  hold(marks.substr(reach) == wanted.substr(reach), "no answer reaches further than it can mean");

  // Two kinds of answers are judged entry by entry: one number, and one signed range.
  char from[5] = "", to[5] = "", sign[2], past;
  const int parts = std::sscanf(text, "%4[0-9]:%4[0-9]%1[+-]%c", from, to, sign, &past);
  const std::size_t first = std::strtoul(from, nullptr, 10), last = std::strtoul(to, nullptr, 10);
  for (auto i = first; parts == 3 && i <= std::min(last, kCount); ++i) wanted[i - (i > 0)] = *sign;
  if (std::strcmp(from, text) == 0 && first >= 1 && first <= kCount) wanted[first - 1] ^= '+' ^ '-';
  hold((parts != 3 && std::strcmp(from, text) != 0) || marks == wanted,
       "an answer marks what it says");

  const std::size_t length = std::strlen(text), width = length % 99 + 1;
  std::vector<char> shown(width + 1);
  FitStringToScreenSize(shown.data(), text, *text, static_cast<int>(width));
  wanted = *text < 0 || static_cast<std::size_t>(*text) > length ? " " : text + *text;
  hold(shown.data() == wanted.substr(0, width), "a window shows its part");
}
