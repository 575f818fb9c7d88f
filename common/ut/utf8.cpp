// utf8.cpp: texts of UTF-8, see utf8.h.
#include "common/ut/utf8.h"

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
