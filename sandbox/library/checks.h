// checks.h: the interface as the library includes it, and checks of what callers pass.
//
// The library is built with hidden symbols. Only the interface's declarations are visible, so that
// exactly the entry points can be found from outside.
#ifndef SANDBOX_LIBRARY_CHECKS_H
#define SANDBOX_LIBRARY_CHECKS_H

#pragma GCC visibility push(default)
#include "api/vltlib.h"
#pragma GCC visibility pop

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "sandbox/store/dates.h"

namespace sandbox {

// The library's own version, and the server's.
inline constexpr VltApiVersionEx kLibraryVersion = {2, 8, 1, 13, 0};

// Why an operation is not carried out. It never leaves the library: the entry points turn it into
// their return code.
struct Refusal {
  std::int16_t code;
};

// Throws Refusal with the code unless the condition holds.
inline void require(bool condition, std::int16_t code = VLT_RC_BAD_ARGUMENT) {
  if (!condition) throw Refusal{code};
}

// Throws Refusal unless the record is there, in the version that the library knows.
template <typename Record>
void requireRecord(const Record* record, std::uint16_t version) {
  require(record != nullptr);
  require(record->structVersion == version, VLT_RC_BAD_STRUCT_VERSION);
}

// A text by its pointer; null counts as empty. Refused if it is longer than `limit` bytes.
std::string_view checkedText(const char* text, std::size_t limit);

// A text in a caller's record. Refused if it has no terminator.
template <std::size_t Size>
std::string_view checkedText(const char (&array)[Size]) {
  return checkedText(array, Size - 1);
}

// Copies what fits, and always terminates.
template <std::size_t Size>
void fillText(char (&array)[Size], std::string_view text) {
  array[text.copy(array, Size - 1)] = '\0';
}

constexpr std::int64_t fromWord(const VltWord64& word) {
  return static_cast<std::int64_t>(std::uint64_t{word.hi} << 32 | word.lo);
}

constexpr VltWord64 toWord(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return {static_cast<std::uint32_t>(bits >> 32), static_cast<std::uint32_t>(bits)};
}

// A date in the store's form; 0 for "no date". Refused if there is no such moment.
Stamp checkedDate(const VltDate& date);
VltDate toDate(Stamp stamp);

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_CHECKS_H
