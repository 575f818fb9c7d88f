// text.cpp: how names are compared: letter case, wildcards, cut names.
#include "sandbox/store/text.h"

#include <algorithm>

namespace sandbox {
namespace {

char upperCase(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Bytes of the character that begins at `position`; 1 where no valid UTF-8 begins.
std::size_t characterLength(std::string_view text, std::size_t position) {
  std::size_t length = 1;
  if ((static_cast<unsigned char>(text[position]) & 0xC0) != 0xC0) return length;
  while (position + length < text.size() && length < 4 &&
         (static_cast<unsigned char>(text[position + length]) & 0xC0) == 0x80)
    ++length;
  return length;
}

}  // namespace

std::string upperCase(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), [](char c) { return upperCase(c); });
  return result;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return upperCase(a) == upperCase(b); });
}

bool wildcardMatches(std::string_view pattern, std::string_view text) {
  // Only the last "*" ever has to be tried again with a longer text: what stands before it is
  // matched as early as possible, so a later match of it would leave no more to choose from.
  std::size_t p = 0, t = 0;
  std::size_t star = std::string_view::npos, starText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starText = t;
      if (p == pattern.size()) return true;
    } else if (p < pattern.size() && pattern[p] == '?') {
      ++p;
      t += characterLength(text, t);
    } else if (p < pattern.size() && pattern[p] == text[t]) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      starText += characterLength(text, starText);
      t = starText;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t end = text.find(separator);
    fields.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

std::string_view trimmed(std::string_view text) {
  static constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace sandbox
