// printable.cpp: foreign text made safe for a terminal, see printable.h.
#include "common/ut/printable.h"

#include <algorithm>
#include <cstdint>

#include "common/ut/utf8.h"

namespace {

struct Range {
  std::uint32_t first, last;
};

// Well-formed characters that must not reach a terminal.
constexpr Range kRefused[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F},  // control characters, the 8-bit ones included
    {0x061C, 0x061C}, {0x200B, 0x200F},  // direction marks, characters of no width
    {0x2028, 0x202E}, {0x2060, 0x206F},  // line ends, embedding, override and isolation
    {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB},  // byte order mark, annotations
};

bool isShown(std::uint32_t character) {
  return std::none_of(std::begin(kRefused), std::end(kRefused), [&](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

}  // namespace

void ut::appendPrintable(std::string_view text, std::string& out) {
  const auto plain = [](char c) { return c >= ' ' && c <= '~'; };
  while (!text.empty()) {
    const auto end = std::find_if_not(text.begin(), text.end(), plain);
    const auto length = static_cast<std::size_t>(end - text.begin());
    out += text.substr(0, length);
    text.remove_prefix(length);
    if (text.empty()) return;
    const Utf8Character next = firstCharacter(text);
    if (next.valid && isShown(next.value)) {
      out += text.substr(0, next.length);
    } else {
      out += '?';
    }
    text.remove_prefix(next.length);
  }
}

std::string ut::printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  appendPrintable(text, result);
  return result;
}
