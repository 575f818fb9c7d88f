// settings.h: the commands SET and COLUMN: what they can set, and their errors.
#ifndef SANDBOX_SQLPLUS_SETTINGS_H
#define SANDBOX_SQLPLUS_SETTINGS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

enum class RecordSeparator {
  kWrapped,  // a blank line after each row that took more than one line
  kEach,     // after every row
  kOff,
};

// What becomes of a value that is wider than its column.
enum class Overflow { kWrapped, kWordWrapped, kTruncated };

struct Settings {
  bool terminal = true;  // whether the terminal sees anything while a script runs
  bool echo = false;     // show the lines of a script
  bool heading = true;
  bool trimSpool = false;
  bool wrap = true;
  bool timing = false;
  bool csv = false, csvQuotes = true;
  std::int64_t lineSize = 80;
  std::int64_t pageSize = 14;  // lines; 0: no pages and no headings
  std::int64_t feedback = 6;   // fewest rows to be counted in words; 0: no feedback
  bool feedbackOnly = false;   // rows are counted, not shown
  RecordSeparator separator = RecordSeparator::kWrapped;
  char terminator = ';';  // of a statement; '\0': none
  std::string null;       // what a row without a handle shows

  // COLUMN handle
  std::int64_t columnWidth = 0;      // 0: that of the longest value
  std::optional<Overflow> overflow;  // otherwise SET WRAP decides
  std::string columnHeading = "HANDLE";
};

// The first word of a text, or the first text in quotes without them, and the rest without the
// blanks between the two.
struct Words {
  std::string_view first, rest;
};
Words firstWord(std::string_view text);

// True for the word itself and its abbreviations of at least `fewest` letters, case-insensitive.
bool abbreviates(std::string_view given, std::string_view word, std::size_t fewest);

// Apply the arguments of a SET or COLUMN command, several options if there are. They return the
// text of the first error, which ends the command; empty if there is none.
std::string applySet(std::string_view arguments, Settings& settings);
std::string applyColumn(std::string_view arguments, Settings& settings);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_SETTINGS_H
