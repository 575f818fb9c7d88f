// settings.h: the SET command: what it can set, and its errors.
#ifndef SANDBOX_SQLPLUS_SETTINGS_H
#define SANDBOX_SQLPLUS_SETTINGS_H

#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

enum class RecordSeparator {
  kWrapped,  // a blank line after each row that took more than one line
  kEach,     // after every row
  kOff,
};

struct Settings {
  bool terminal = true;  // whether the terminal sees anything while a script runs
  bool heading = true;
  bool trimSpool = false;
  std::int64_t lineSize = 80;
  std::int64_t pageSize = 14;  // lines; 0: no pages and no headings
  std::int64_t feedback = 6;   // fewest rows to be counted in words; 0: never
  RecordSeparator separator = RecordSeparator::kWrapped;
  char terminator = ';';  // of a statement; '\0': none
};

// The first word of a text, and the rest without the blanks between them.
struct Words {
  std::string_view first, rest;
};
Words firstWord(std::string_view text);

// Applies the arguments of a SET command, several options if there are. Returns the text of the
// first error, which ends the command; empty if there is none.
std::string applySet(std::string_view arguments, Settings& settings);

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_SETTINGS_H
