// oracle_date.cpp: date texts read against a date format, with Oracle's errors.
#include "sandbox/sqlplus/oracle_date.h"

#include <algorithm>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

// One element of a format: a number of at most as many digits as `most` has.
struct Element {
  std::string_view name;
  int DateParts::*part;
  int least, most;
  const char* outOfRange;
};

constexpr Element kElements[] = {
    {"YYYY", &DateParts::year, 1, 9999,
     "ORA-01841: (full) year must be between -4713 and +9999, and not be 0"},
    {"MM", &DateParts::month, 1, 12, "ORA-01843: not a valid month"},
    {"DD", &DateParts::day, 1, 31,
     "ORA-01847: day of month must be between 1 and last day of month"},
    {"HH24", &DateParts::hour, 0, 23, "ORA-01850: hour must be between 0 and 23"},
    {"MI", &DateParts::minute, 0, 59, "ORA-01851: minutes must be between 0 and 59"},
    {"SS", &DateParts::second, 0, 59, "ORA-01852: seconds must be between 0 and 59"},
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int takeNumber(std::string_view& text, int most) {
  std::size_t used = 0;
  while (used < std::to_string(most).size() && used < text.size() && isDigit(text[used])) ++used;
  const auto value = parseNumber(text.substr(0, used), 0, 9999);
  if (!value)
    throw OracleError{"ORA-01858: a non-numeric character was found where a numeric was expected"};
  text.remove_prefix(used);
  return static_cast<int>(*value);
}

// Any punctuation of the text will do for the format's.
void takePunctuation(std::string_view& text, char wanted) {
  if (isDigit(wanted) || isLetter(wanted))
    throw OracleError{"ORA-01821: date format not recognized"};
  if (isDigit(text.front()) || isLetter(text.front()))
    throw OracleError{"ORA-01861: literal does not match format string"};
  text.remove_prefix(1);
}

}  // namespace

Stamp parseOracleDate(std::string_view text, std::string_view format) {
  DateParts parts{0, 1, 1, 0, 0, 0};
  text = trimmed(text);
  while (!format.empty() && !text.empty()) {
    const auto element = std::ranges::find_if(kElements, [&](const Element& known) {
      return equalIgnoringCase(format.substr(0, known.name.size()), known.name);
    });
    if (element == std::end(kElements)) {
      takePunctuation(text, format.front());
      format.remove_prefix(1);
      continue;
    }
    const int value = takeNumber(text, element->most);
    if (value < element->least || value > element->most) throw OracleError{element->outOfRange};
    parts.*element->part = value;
    format.remove_prefix(element->name.size());
  }
  if (!text.empty())
    throw OracleError{"ORA-01830: date format picture ends before converting entire input string"};
  if (parts.year == 0) throw OracleError{"ORA-01840: input value not long enough for date format"};
  if (!isRealDate(parts)) throw OracleError{"ORA-01839: date not valid for month specified"};
  return toStamp(parts);
}

}  // namespace sandbox
