// strutil.h: texts in arrays of fixed size.
//
// copyText is the one way to fill such an array: it never writes past the end, always terminates,
// and tells whether the text was cut, so that a caller whose text must not be cut can refuse it.
#ifndef COMMON_UT_STRUTIL_H
#define COMMON_UT_STRUTIL_H

#include <cstddef>
#include <cstring>
#include <string_view>

namespace ut {

// Copies at most size - 1 bytes of `from` into `to` and terminates. False: it did not fit whole.
// A size of 0 writes nothing.
inline bool copyText(char* to, std::size_t size, std::string_view from) {
  if (size == 0) return false;
  const std::size_t length = from.size() < size ? from.size() : size - 1;
  std::memcpy(to, from.data(), length);
  to[length] = '\0';
  return length == from.size();
}

template <std::size_t N>
bool copyText(char (&to)[N], std::string_view from) {
  return copyText(to, N, from);
}

// Appends to the text that `to` holds, by the same rule.
template <std::size_t N>
bool appendText(char (&to)[N], std::string_view from) {
  const std::size_t length = std::strlen(to);
  return copyText(to + length, N - length, from);
}

// Terminates an array that foreign code filled: a text as long as its array has no terminator.
template <std::size_t N>
void terminate(char (&text)[N]) {
  text[N - 1] = '\0';
}

}  // namespace ut

#endif  // COMMON_UT_STRUTIL_H
