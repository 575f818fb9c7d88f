// printable.h: foreign text made safe for a terminal.
//
// Object names, owners, server texts, file names and command lines come from elsewhere and may hold
// anything: a sequence that clears the screen, renames the window, types an answer, or makes one
// name look like another. The data itself is never changed; what is shown is a copy made here.
#ifndef COMMON_UT_PRINTABLE_H
#define COMMON_UT_PRINTABLE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace ut {

// Appends `text` to `out` with one "?" instead of each control character (line ends and tabs
// included), each invalid sequence of UTF-8, and each character that reorders or hides its
// neighbours. Throws std::bad_alloc.
void appendPrintable(std::string_view text, std::string& out);

std::string printable(std::string_view text);

// Whether the character that `text` (not empty) begins with may be shown; `*length` is its bytes.
bool isShown(std::string_view text, std::size_t* length);

// The same as appendPrintable for callers that must not allocate: calls add(std::string_view) for
// each stretch of the result.
template <typename Add>
void forEachPrintable(std::string_view text, Add add) {
  const auto plain = [](char c) { return c >= ' ' && c <= '~'; };
  while (!text.empty()) {
    std::size_t length = 0;
    while (length < text.size() && plain(text[length])) ++length;
    if (length > 0) {
      add(text.substr(0, length));
    } else if (isShown(text, &length)) {
      add(text.substr(0, length));
    } else {
      add(std::string_view("?"));
    }
    text.remove_prefix(length);
  }
}

}  // namespace ut

#endif  // COMMON_UT_PRINTABLE_H
