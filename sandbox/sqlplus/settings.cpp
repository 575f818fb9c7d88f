// settings.cpp: the commands SET and COLUMN: what they can set, and their errors.
#include "sandbox/sqlplus/settings.h"

#include <algorithm>
#include <limits>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

struct Switch {
  std::string_view name;
  std::size_t fewest;  // letters of the shortest abbreviation
  bool Settings::*flag;
};

constexpr Switch kSwitches[] = {
    {"TERMOUT", 4, &Settings::terminal},    {"ECHO", 4, &Settings::echo},
    {"HEADING", 3, &Settings::heading},     {"WRAP", 3, &Settings::wrap},
    {"TRIMSPOOL", 5, &Settings::trimSpool}, {"TIMING", 4, &Settings::timing},
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

std::string unknownOption(std::string_view command, std::string_view name) {
  return "SP2-0158: unknown " + std::string(command) + " option \"" + std::string(name) + "\"";
}

std::string setSwitch(const Switch& row, std::string_view value, Settings& settings) {
  settings.*row.flag = equalIgnoringCase(value, "ON");
  if (settings.*row.flag || equalIgnoringCase(value, "OFF")) return {};
  return "SP2-0265: " + lowerCase(row.name) + " must be set ON or OFF";
}

std::string setNumber(const Number& row, std::string_view value, Settings& settings) {
  const std::string name = lowerCase(row.name);
  const auto number =
      parseNumber(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  if (!number) return "SP2-0268: " + name + " option not a valid number";
  if (*number < row.least || *number > row.most) {
    return "SP2-0267: " + name + " option " + std::string(value) + " out of range (" +
           std::to_string(row.least) + " through " + std::to_string(row.most) + ")";
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
  return unknownOption("SET recsep", value);
}

// MARKUP CSV ON|OFF [QUOTE ON|OFF], of which `rest` is what follows MARKUP.
std::string setMarkup(std::string_view& rest, Settings& settings) {
  std::string error;
  while (error.empty() && !rest.empty()) {
    const auto [name, afterName] = firstWord(rest);
    const auto [value, afterValue] = firstWord(afterName);
    if (equalIgnoringCase(name, "CSV")) {
      error = setSwitch({"markup csv", 0, &Settings::csv}, value, settings);
    } else if (equalIgnoringCase(name, "QUOTE")) {
      error = setSwitch({"markup csv quote", 0, &Settings::csvQuotes}, value, settings);
    } else {
      return unknownOption("SET markup", name);
    }
    rest = afterValue;
  }
  return error;
}

std::string setOption(std::string_view name, std::string_view value, Settings& settings) {
  for (const Switch& row : kSwitches) {
    if (abbreviates(name, row.name, row.fewest)) return setSwitch(row, value, settings);
  }
  if (abbreviates(name, "FEEDBACK", 4)) {
    settings.feedbackOnly = equalIgnoringCase(value, "ONLY");
    if (settings.feedbackOnly || equalIgnoringCase(value, "ON")) value = "1";
    if (equalIgnoringCase(value, "OFF")) value = "0";
  }
  for (const Number& row : kNumbers) {
    if (abbreviates(name, row.name, row.fewest)) return setNumber(row, value, settings);
  }
  if (abbreviates(name, "RECSEP", 6)) return setSeparator(value, settings);
  if (equalIgnoringCase(name, "NULL")) {
    settings.null = value;
  } else if (abbreviates(name, "SQLTERMINATOR", 4)) {
    settings.terminator = equalIgnoringCase(value, "OFF") ? '\0'
                          : value.size() == 1             ? value[0]
                                                          : ';';
  } else {
    return unknownOption("SET", name);
  }
  return {};
}

// One option of COLUMN; `rest` is what follows its name.
std::string setColumnOption(std::string_view name, std::string_view& rest, Settings& settings) {
  if (abbreviates(name, "WRAPPED", 3)) {
    settings.overflow = Overflow::kWrapped;
  } else if (abbreviates(name, "WORD_WRAPPED", 3)) {
    settings.overflow = Overflow::kWordWrapped;
  } else if (abbreviates(name, "TRUNCATED", 3)) {
    settings.overflow = Overflow::kTruncated;
  } else if (abbreviates(name, "CLEAR", 3)) {
    const Settings defaults;
    settings.columnWidth = defaults.columnWidth;
    settings.overflow = defaults.overflow;
    settings.columnHeading = defaults.columnHeading;
  } else if (abbreviates(name, "HEADING", 3)) {
    const auto [value, afterValue] = firstWord(rest);
    settings.columnHeading = value;
    rest = afterValue;
  } else if (abbreviates(name, "FORMAT", 3)) {
    const auto [value, afterValue] = firstWord(rest);
    const auto width = parseNumber(value.substr(std::min<std::size_t>(1, value.size())), 1, 60000);
    if (!width || !equalIgnoringCase(value.substr(0, 1), "A")) {
      return "SP2-0246: Illegal FORMAT string \"" + std::string(value) + "\"";
    }
    settings.columnWidth = *width;
    rest = afterValue;
  } else {
    return unknownOption("COLUMN", name);
  }
  return {};
}

}  // namespace

Words firstWord(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('\'') || text.starts_with('"')) {
    const std::size_t quote = text.find(text.front(), 1);
    if (quote != text.npos) return {text.substr(1, quote - 1), trimmed(text.substr(quote + 1))};
  }
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  return {text.substr(0, end), trimmed(text.substr(end))};
}

bool abbreviates(std::string_view given, std::string_view word, std::size_t fewest) {
  return given.size() >= fewest && equalIgnoringCase(given, word.substr(0, given.size()));
}

std::string applySet(std::string_view arguments, Settings& settings) {
  if (arguments.empty()) return "SP2-0281: set missing set option";
  std::string error;
  while (error.empty() && !arguments.empty()) {
    const auto [name, afterName] = firstWord(arguments);
    arguments = afterName;
    if (abbreviates(name, "MARKUP", 4)) {
      error = setMarkup(arguments, settings);
      continue;
    }
    const auto [value, afterValue] = firstWord(arguments);
    arguments = afterValue;
    error = setOption(name, value, settings);
  }
  return error;
}

std::string applyColumn(std::string_view arguments, Settings& settings) {
  const auto [column, afterColumn] = firstWord(arguments);
  if (!equalIgnoringCase(column, "HANDLE")) return {};  // no other column is ever shown
  std::string error;
  for (std::string_view rest = afterColumn; error.empty() && !rest.empty();) {
    const auto [name, afterName] = firstWord(rest);
    rest = afterName;
    error = setColumnOption(name, rest, settings);
  }
  return error;
}

}  // namespace sandbox
