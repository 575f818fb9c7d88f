// strutil.h: the few text helpers that every floor needs.
//
// Texts live in fixed-size arrays. copyText is the one way to fill such an array: it never writes
// past the end and always terminates, and it tells when something had to be cut, so that a caller
// whose text must not be cut can refuse it.
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

// A text of UTF-8 that was cut somewhere, without the part of a character that the cut left at its
// end.
inline std::string_view withoutTornEnd(std::string_view text) {
  std::size_t behind = 0;  // bytes that go on with a character
  while (behind < text.size() && (text[text.size() - 1 - behind] & 0xC0) == 0x80) ++behind;
  if (behind == text.size()) return text;
  const auto lead = static_cast<unsigned char>(text[text.size() - 1 - behind]);
  const std::size_t wanted = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  return behind < wanted ? text.substr(0, text.size() - 1 - behind) : text;
}

// Terminates a text that somebody else filled: one that uses its whole array has no end of its own.
template <std::size_t N>
void terminate(char (&text)[N]) {
  text[N - 1] = '\0';
}

// Upper-cases ASCII letters in place. Keywords are ASCII; other bytes stay as they are, whatever
// the locale says.
inline void upperCase(char* text) {
  for (; *text != '\0'; ++text) {
    if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 'a' + 'A');
  }
}

// Overwrites memory that held a secret, in a way that the compiler cannot drop.
inline void wipe(void* memory, std::size_t size) {
  volatile unsigned char* bytes = static_cast<unsigned char*>(memory);
  while (size > 0) bytes[--size] = 0;
}

// Drops a result on purpose. The reason is for the reader of the call.
template <typename T>
void ignoreResult([[maybe_unused]] const T& result, [[maybe_unused]] const char* reason) {}

}  // namespace ut

#endif  // COMMON_UT_STRUTIL_H
