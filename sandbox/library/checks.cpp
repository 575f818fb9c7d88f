// checks.cpp: checks of what callers pass.
#include "sandbox/library/checks.h"

#include <cstring>

namespace sandbox {

std::string_view checkedText(const char* text, std::size_t limit) {
  if (text == nullptr) return {};
  const std::size_t length = strnlen(text, limit + 1);
  require(length <= limit);
  return {text, length};
}

Stamp checkedDate(const VltDate& date) {
  const DateParts parts{date.year, date.month, date.day, date.hour, date.minute, date.second};
  const Stamp stamp = toStamp(parts);
  require(stamp == 0 || isRealDate(parts));
  return stamp;
}

VltDate toDate(Stamp stamp) {
  const DateParts parts = toParts(stamp);
  return {static_cast<std::uint16_t>(parts.year),  static_cast<std::uint8_t>(parts.month),
          static_cast<std::uint8_t>(parts.day),    static_cast<std::uint8_t>(parts.hour),
          static_cast<std::uint8_t>(parts.minute), static_cast<std::uint8_t>(parts.second)};
}

}  // namespace sandbox
