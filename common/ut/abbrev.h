// abbrev.h: whether a word abbreviates a keyword.
#ifndef COMMON_UT_ABBREV_H
#define COMMON_UT_ABBREV_H

#include <string_view>

namespace ut {

template <typename Char>
bool isAbbreviation(std::basic_string_view<Char> input, std::basic_string_view<Char> keyword,
                    std::size_t minimum) {
  return !input.empty() && input.size() >= minimum && keyword.substr(0, input.size()) == input;
}

}  // namespace ut

// True if the keyword begins with `input`, and `input` is not empty and has `minimum` characters or
// more. Case matters: pass both in capitals.
inline bool Abbrev(const char* input, const char* keyword, std::size_t minimum) {
  return ut::isAbbreviation<char>(input, keyword, minimum);
}
inline bool Abbrev(const wchar_t* input, const wchar_t* keyword, std::size_t minimum) {
  return ut::isAbbreviation<wchar_t>(input, keyword, minimum);
}

#endif  // COMMON_UT_ABBREV_H
