// utf8.cpp: texts of UTF-8, see utf8.h.
#include "common/ut/utf8.h"

namespace {

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

}  // namespace

// Invalid bytes end before the first one that does not fit: it may begin the next character.
ut::Utf8Character ut::firstCharacter(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const Lead* lead = leadOf(byteAt(0));
  if (lead == nullptr) return {1, 0, false};
  static constexpr unsigned char kValueBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  std::uint32_t character = byteAt(0) & kValueBits[lead->length];
  for (std::size_t i = 1; i < lead->length; ++i) {
    const unsigned char from = i == 1 ? lead->secondFrom : 0x80;
    const unsigned char to = i == 1 ? lead->secondTo : 0xBF;
    if (i == text.size() || byteAt(i) < from || byteAt(i) > to) return {i, 0, false};
    character = character << 6 | (byteAt(i) & 0x3Fu);
  }
  return {lead->length, character, true};
}

bool ut::isUtf8(std::string_view text) {
  while (!text.empty()) {
    const Utf8Character next = firstCharacter(text);
    if (!next.valid) return false;
    text.remove_prefix(next.length);
  }
  return true;
}

std::string_view ut::withoutTornEnd(std::string_view text) {
  std::size_t continuations = 0;  // at the end of the text
  while (continuations < text.size() && isContinuation(text[text.size() - 1 - continuations])) {
    ++continuations;
  }
  if (continuations == text.size()) return text;
  const std::size_t start = text.size() - 1 - continuations;
  const auto lead = static_cast<unsigned char>(text[start]);
  const std::size_t wanted = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  return continuations < wanted ? text.substr(0, start) : text;
}

std::string ut::wrapped(std::string_view text, std::size_t width) {
  std::string result(text);
  std::size_t column = 0;
  std::size_t blank = std::string::npos;  // where the line can still be ended
  std::size_t sinceBlank = 0;             // columns after it
  bool leading = true;                    // only blanks so far
  for (std::size_t i = 0; i < result.size(); ++i) {
    const char c = result[i];
    if (c == '\n') {
      column = 0;
      blank = std::string::npos;
      leading = true;
      continue;
    }
    if (isContinuation(c)) continue;
    ++column;
    ++sinceBlank;
    if (c != ' ') {
      leading = false;
    } else if (!leading) {
      blank = i;
      sinceBlank = 0;
    }
    if (column > width && blank != std::string::npos) {
      result[blank] = '\n';
      column = sinceBlank;
      blank = std::string::npos;
    }
  }
  return result;
}
