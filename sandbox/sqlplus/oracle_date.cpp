// oracle_date.cpp: date texts read against a date format, with Oracle's errors.
#include "sandbox/sqlplus/oracle_date.h"

#include <algorithm>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

struct Element {
  std::string_view name;
  int DateParts::*part;
  std::size_t digits;
};

constexpr Element kElements[] = {
    {"YYYY", &DateParts::year, 4}, {"MM", &DateParts::month, 2},  {"DD", &DateParts::day, 2},
    {"HH24", &DateParts::hour, 2}, {"MI", &DateParts::minute, 2}, {"SS", &DateParts::second, 2},
};

}  // namespace

Stamp parseOracleDate(std::string_view text, std::string_view format) {
  static constexpr const char* kNoMatch = "ORA-01861: literal does not match format string";
  DateParts parts{0, 1, 1, 0, 0, 0};
  while (!format.empty() && !text.empty()) {
    const auto element = std::ranges::find_if(kElements, [&](const Element& known) {
      return equalIgnoringCase(format.substr(0, known.name.size()), known.name);
    });
    if (element == std::end(kElements)) {
      if (text.front() != format.front()) throw OracleError{kNoMatch};
      text.remove_prefix(1);
      format.remove_prefix(1);
      continue;
    }
    std::size_t used = 0;
    while (used < element->digits && used < text.size() && isDigit(text[used])) ++used;
    if (used == 0) throw OracleError{kNoMatch};
    parts.*element->part = static_cast<int>(*parseNumber(text.substr(0, used), 0, 9999));
    text.remove_prefix(used);
    format.remove_prefix(element->name.size());
  }
  if (!text.empty() || parts.year == 0) throw OracleError{kNoMatch};
  if (!isRealDate(parts)) throw OracleError{"ORA-01839: date not valid for month specified"};
  return toStamp(parts);
}

}  // namespace sandbox
