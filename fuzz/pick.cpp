// pick.cpp: answers to the pick list, and the part of a line that fits on the screen.
#include "fuzz/fuzz.h"
#include "utility/utpick.h"

void fuzz::check(const std::string&, char* text) {
  ObjectList list;
  utility::PickTotal picked;
  for (int i = 0; i < 20; ++i) hold(list.addTail(utZylObj_s(), 0) == 0, "there is memory");
  ProcessAnswer(&list, text, 17, &picked);
  hold(picked.total.count == utility::summarizePicks(list).total.count, "the marks are counted");
  const bool anyNumber = std::strpbrk(text, "0123456789") != nullptr;
  // Without a number an answer can mark the first entry only; the last three are out of its reach.
  for (unsigned at = anyNumber ? 18 : 2; at <= 20; ++at) {
    hold(list.elementAt(at)->selected == 0, "no answer reaches further than it can mean");
  }
  // The first byte of the text is the offset of a window, its length gives the width.
  const std::size_t length = std::strlen(text), width = length % 99 + 1;
  const bool outside = *text < 0 || static_cast<std::size_t>(*text) > length;
  std::vector<char> shown(width + 1);
  FitStringToScreenSize(shown.data(), text, *text, static_cast<int>(width));
  const std::string expected = outside ? " " : text + *text;
  hold(shown.data() == expected.substr(0, width), "a window shows its part of the line");
}
