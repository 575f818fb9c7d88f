// utf8.h: texts of UTF-8: counting, cutting and wrapping by characters instead of bytes.
//
// A character begins with one byte and may have up to three continuation bytes, 10xxxxxx. Only
// firstCharacter and isUtf8 check that a text is valid.
#ifndef COMMON_UT_UTF8_H
#define COMMON_UT_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ut {

// Whether a byte continues a character that an earlier byte began.
constexpr bool isContinuation(char byte) { return (byte & 0xC0) == 0x80; }

// How many columns a text takes, one for each character.
constexpr std::size_t columns(std::string_view text) {
  std::size_t count = 0;
  for (const char byte : text) count += isContinuation(byte) ? 0 : 1;
  return count;
}

// What a text, not empty, begins with.
struct Utf8Character {
  std::size_t length;   // bytes; of invalid ones: how many to skip
  std::uint32_t value;  // Unicode code point
  bool valid;
};
Utf8Character firstCharacter(std::string_view text);

// Whether a text is UTF-8 throughout.
bool isUtf8(std::string_view text);

// For a text that was cut at some byte: the text without the incomplete character at its end.
std::string_view withoutTornEnd(std::string_view text);

// The text with line ends instead of blanks, so that no line is wider than `width` columns, one for
// each character. A longer word is not broken. Blanks at the beginning of a line are never
// replaced, so that indented columns keep their shape. Throws std::bad_alloc.
std::string wrapped(std::string_view text, std::size_t width);

}  // namespace ut

#endif  // COMMON_UT_UTF8_H
