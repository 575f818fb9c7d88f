// text.h: small services for texts: letter case, fields, blanks, numbers.
#ifndef SANDBOX_STORE_TEXT_H
#define SANDBOX_STORE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

// ASCII letters made capitals or small; every other byte is kept.
std::string upperCase(std::string_view text);
std::string lowerCase(std::string_view text);
bool equalIgnoringCase(std::string_view left, std::string_view right);

// The fields between separators; an empty text has one empty field.
std::vector<std::string_view> split(std::string_view text, char separator);

// Without the blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);

// A whole decimal number between the limits, without blanks or a plus sign; nothing for any other
// text.
std::optional<std::int64_t> parseNumber(std::string_view text, std::int64_t least,
                                        std::int64_t most);

}  // namespace sandbox

#endif  // SANDBOX_STORE_TEXT_H
