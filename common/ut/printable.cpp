// printable.cpp: foreign text made safe for a terminal, see printable.h.
#include "common/ut/printable.h"

#include <algorithm>
#include <cstdint>

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

// How a sequence of UTF-8 begins: its length and the range of its second byte, which excludes
// overlong forms, surrogates and what lies beyond U+10FFFF.
struct Lead {
  unsigned char first, last;  // of the leading byte
  std::size_t length;
  unsigned char secondFrom, secondTo;
};
constexpr Lead kLeads[] = {
    {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

const Lead* leadOf(unsigned char byte) {
  for (const Lead& lead : kLeads) {
    if (byte >= lead.first && byte <= lead.last) return &lead;
  }
  return nullptr;
}

// The length of a text's next character, or of the invalid bytes that it begins with.
struct Decoded {
  std::size_t length;
  bool shown;
};

// Invalid bytes end before the first one that does not fit: it may begin the next character.
Decoded decode(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const Lead* lead = leadOf(byteAt(0));
  if (lead == nullptr) return {1, false};
  static constexpr unsigned char kValueBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  std::uint32_t character = byteAt(0) & kValueBits[lead->length];
  for (std::size_t i = 1; i < lead->length; ++i) {
    const unsigned char from = i == 1 ? lead->secondFrom : 0x80;
    const unsigned char to = i == 1 ? lead->secondTo : 0xBF;
    if (i == text.size() || byteAt(i) < from || byteAt(i) > to) return {i, false};
    character = character << 6 | (byteAt(i) & 0x3Fu);
  }
  return {lead->length, isShown(character)};
}

}  // namespace

void ut::appendPrintable(std::string_view text, std::string& out) {
  const auto plain = [](char c) { return c >= ' ' && c <= '~'; };
  while (!text.empty()) {
    // Almost everything is plain ASCII: whole runs of it are copied at once.
    const auto end = std::find_if_not(text.begin(), text.end(), plain);
    const auto length = static_cast<std::size_t>(end - text.begin());
    out += text.substr(0, length);
    text.remove_prefix(length);
    if (text.empty()) return;
    const Decoded next = decode(text);
    if (next.shown) {
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
