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

}  // namespace

bool ut::isShown(std::string_view text, std::size_t* length) {
  const Utf8Character next = firstCharacter(text);
  *length = next.length;
  return next.valid && std::none_of(std::begin(kRefused), std::end(kRefused), [&](const Range& r) {
           return next.value >= r.first && next.value <= r.last;
         });
}

void ut::appendPrintable(std::string_view text, std::string& out) {
  forEachPrintable(text, [&out](std::string_view part) { out += part; });
}

std::string ut::printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  appendPrintable(text, result);
  return result;
}
