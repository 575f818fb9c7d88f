// settings.cpp: the SET command: what it can set, and its errors.
#include "sandbox/sqlplus/settings.h"

#include <algorithm>
#include <limits>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

// An option is named by its word, or by an abbreviation of at least `fewest` letters.
bool abbreviates(std::string_view given, std::string_view word, std::size_t fewest) {
  return given.size() >= fewest && given.size() <= word.size() &&
         equalIgnoringCase(given, word.substr(0, given.size()));
}

struct Switch {
  std::string_view name;
  std::size_t fewest;
  bool Settings::*flag;
};

constexpr Switch kSwitches[] = {
    {"TERMOUT", 4, &Settings::terminal},
    {"HEADING", 3, &Settings::heading},
    {"TRIMSPOOL", 5, &Settings::trimSpool},
};

struct Number {
  std::string_view name;
  std::size_t fewest;
  std::int64_t Settings::*number;
  std::int64_t least, most;
};

constexpr Number kNumbers[] = {
    {"PAGESIZE", 5, &Settings::pageSize, 0, 50000},
    {"LINESIZE", 3, &Settings::lineSize, 1, 32767},
    {"FEEDBACK", 4, &Settings::feedback, 0, 50000},
};

std::string setSwitch(const Switch& row, std::string_view value, Settings& settings) {
  settings.*row.flag = equalIgnoringCase(value, "ON");
  if (settings.*row.flag || equalIgnoringCase(value, "OFF")) return {};
  return "SP2-0265: " + std::string(row.name) + " must be set ON or OFF";
}

std::string setNumber(const Number& row, std::string_view value, Settings& settings) {
  if (row.number == &Settings::feedback && equalIgnoringCase(value, "ON")) value = "1";
  if (row.number == &Settings::feedback && equalIgnoringCase(value, "OFF")) value = "0";
  const auto number =
      parseNumber(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  if (!number) return "SP2-0268: " + std::string(row.name) + " option not a valid number";
  if (*number < row.least || *number > row.most) {
    return "SP2-0267: " + std::string(row.name) + " option " + std::string(value) +
           " out of range (" + std::to_string(row.least) + " through " + std::to_string(row.most) +
           ")";
  }
  settings.*row.number = *number;
  return {};
}

std::string setSeparator(std::string_view value, Settings& settings) {
  static constexpr std::string_view kWords[] = {"WRAPPED", "EACH", "OFF"};
  for (std::size_t i = 0; i < std::size(kWords); ++i) {
    if (!abbreviates(value, kWords[i], 2)) continue;
    settings.separator = static_cast<RecordSeparator>(i);
    return {};
  }
  return "SP2-0158: unknown SET recsep option \"" + std::string(value) + "\"";
}

std::string setOption(std::string_view name, std::string_view value, Settings& settings) {
  for (const Switch& row : kSwitches) {
    if (abbreviates(name, row.name, row.fewest)) return setSwitch(row, value, settings);
  }
  for (const Number& row : kNumbers) {
    if (abbreviates(name, row.name, row.fewest)) return setNumber(row, value, settings);
  }
  if (abbreviates(name, "RECSEP", 6)) return setSeparator(value, settings);
  if (!abbreviates(name, "SQLTERMINATOR", 4)) {
    return "SP2-0158: unknown SET option \"" + std::string(name) + "\"";
  }
  settings.terminator = equalIgnoringCase(value, "OFF") ? '\0' : value.size() == 1 ? value[0] : ';';
  return {};
}

}  // namespace

Words firstWord(std::string_view text) {
  text = trimmed(text);
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  return {text.substr(0, end), trimmed(text.substr(end))};
}

std::string applySet(std::string_view arguments, Settings& settings) {
  if (arguments.empty()) return "SP2-0281: set missing set option";
  std::string error;
  while (error.empty() && !arguments.empty()) {
    const auto [name, afterName] = firstWord(arguments);
    const auto [value, afterValue] = firstWord(afterName);
    error = setOption(name, value, settings);
    arguments = afterValue;
  }
  return error;
}

}  // namespace sandbox
