// ascii.h: digits and letters of ASCII.
//
// Keywords, options and numbers are ASCII whatever the locale says, and any other byte is neither a
// digit nor a letter. The routines of <cctype> ask the locale, and are undefined for a negative
// character.
#ifndef COMMON_UT_ASCII_H
#define COMMON_UT_ASCII_H

#include <string_view>

namespace ut {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Whether a text holds ASCII only.
constexpr bool isAscii(std::string_view text) {
  unsigned char all = 0;  // no early end: so several characters are looked at at once
  for (const char c : text) all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
  return all <= 0x7F;
}

// Change the case of the letters of a text in place.
constexpr void upperCase(char* text) {
  for (; *text != '\0'; ++text) {
    if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
  }
}
constexpr void lowerCase(char* text) {
  for (; *text != '\0'; ++text) {
    if (*text >= 'A' && *text <= 'Z') *text = static_cast<char>(*text - 'A' + 'a');
  }
}

}  // namespace ut

#endif  // COMMON_UT_ASCII_H
