// text.h: how names are compared: letter case, wildcards, cut names.
#ifndef SANDBOX_STORE_TEXT_H
#define SANDBOX_STORE_TEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// ASCII letters made capitals; every other byte stays. Node names are stored this way.
std::string upperCase(std::string_view text);
bool equalIgnoringCase(std::string_view left, std::string_view right);

// True when `pattern` covers the whole of `text`: "*" stands for any text, also none, "?" for one
// character (a whole one in UTF-8), everything else for itself, letter case included. Takes time
// in proportion to both lengths multiplied, whatever the pattern.
bool wildcardMatches(std::string_view pattern, std::string_view text);

// The fields between the separators; an empty text has one empty field.
std::vector<std::string_view> split(std::string_view text, char separator);

// Without the blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace sandbox

#endif  // SANDBOX_STORE_TEXT_H
