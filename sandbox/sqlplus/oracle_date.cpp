// oracle_date.cpp: date texts read against a date format, with Oracle's errors.
#include "sandbox/sqlplus/oracle_date.h"

#include <array>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr const char* kNotRecognized = "ORA-01821: date format not recognized";
constexpr const char* kNotNumeric =
    "ORA-01858: a non-numeric character was found where a numeric was expected";
constexpr const char* kNoMatch = "ORA-01861: literal does not match format string";
constexpr const char* kTooLong =
    "ORA-01830: date format picture ends before converting entire input string";
constexpr const char* kTooShort = "ORA-01840: input value not long enough for date format";

// One element of a format: a number of up to `digits` digits, or a name (0 digits).
struct Element {
  std::string_view name;
  std::size_t digits;
  int DateParts::*part;
  int least, most;
  bool ofTime;
  const char* outOfRange;
};

constexpr Element kElements[] = {
    {"YYYY", 4, &DateParts::year, 1, 9999, false,
     "ORA-01841: (full) year must be between -4713 and +9999, and not be 0"},
    {"RR", 2, &DateParts::year, 0, 99, false, kNoMatch},
    {"MON", 0, &DateParts::month, 1, 12, false, "ORA-01843: not a valid month"},
    {"MM", 2, &DateParts::month, 1, 12, false, "ORA-01843: not a valid month"},
    {"DD", 2, &DateParts::day, 1, 31, false,
     "ORA-01847: day of month must be between 1 and last day of month"},
    {"HH24", 2, &DateParts::hour, 0, 23, true, "ORA-01850: hour must be between 0 and 23"},
    {"MI", 2, &DateParts::minute, 0, 59, true, "ORA-01851: minutes must be between 0 and 59"},
    {"SS", 2, &DateParts::second, 0, 59, true, "ORA-01852: seconds must be between 0 and 59"},
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

const Element& elementAt(std::string_view format) {
  for (const Element& element : kElements)
    if (equalIgnoringCase(format.substr(0, element.name.size()), element.name)) return element;
  throw OracleError{kNotRecognized};
}

int takeNumber(std::string_view& text, std::size_t digits) {
  int value = 0;
  std::size_t used = 0;
  for (; used < digits && used < text.size() && isDigit(text[used]); ++used)
    value = value * 10 + (text[used] - '0');
  if (used == 0) throw OracleError{kNotNumeric};
  text.remove_prefix(used);
  return value;
}

int takeMonthName(std::string_view& text) {
  static constexpr std::array<std::string_view, 12> kNames = {
      "JAN", "FEB", "MAR", "APR", "MAY", "JUN", "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (!equalIgnoringCase(text.substr(0, 3), kNames[i])) continue;
    text.remove_prefix(3);
    return static_cast<int>(i) + 1;
  }
  throw OracleError{"ORA-01843: not a valid month"};
}

void takeElement(const Element& element, std::string_view& text, DateParts& parts) {
  const int value = element.digits > 0 ? takeNumber(text, element.digits) : takeMonthName(text);
  if (value < element.least || value > element.most) throw OracleError{element.outOfRange};
  // Two digits stand for the nearer century.
  const int century = element.name != "RR" ? 0 : value < 50 ? 2000 : 1900;
  parts.*element.part = century + value;
}

// What the format still asks for when the text has ended.
void requireOnlyTime(std::string_view format) {
  while (!format.empty()) {
    if (!isLetter(format.front())) {
      format.remove_prefix(1);
      continue;
    }
    const Element& element = elementAt(format);
    if (!element.ofTime) throw OracleError{kTooShort};
    format.remove_prefix(element.name.size());
  }
}

}  // namespace

Stamp parseOracleDate(std::string_view text, std::string_view format) {
  DateParts parts{0, 1, 1, 0, 0, 0};
  text = trimmed(text);
  while (!format.empty()) {
    if (text.empty()) {
      requireOnlyTime(format);
      break;
    }
    if (isLetter(format.front())) {
      const Element& element = elementAt(format);
      takeElement(element, text, parts);
      format.remove_prefix(element.name.size());
    } else {
      if (isDigit(format.front())) throw OracleError{kNotRecognized};
      // Any punctuation of the text will do for the format's.
      if (isDigit(text.front()) || isLetter(text.front())) throw OracleError{kNoMatch};
      text.remove_prefix(1);
      format.remove_prefix(1);
    }
  }
  if (!text.empty()) throw OracleError{kTooLong};
  if (!isRealDate(parts)) throw OracleError{"ORA-01839: date not valid for month specified"};
  return toStamp(parts);
}

}  // namespace sandbox
