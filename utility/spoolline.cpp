// spoolline.cpp: what one line of a spool file is, see spoolline.h.
#include "utility/spoolline.h"

#include <algorithm>
#include <charconv>

#include "common/ut/ascii.h"
#include "common/ut/utf8.h"

namespace {

using utility::LineKind;

// Plain comparisons: every line of an answer of a million rows comes through here.
bool isSeparator(char c) { return c == ' ' || c == ',' || c == '\n' || c == '\t'; }
bool isBlank(char c) { return c == ' ' || c == '\t'; }

// The first word of a text, which is removed from it together with the separators before it.
std::string_view takeWord(std::string_view* text) {
  std::size_t start = 0;
  while (start < text->size() && isSeparator((*text)[start])) ++start;
  std::size_t end = start;
  while (end < text->size() && !isSeparator((*text)[end])) ++end;
  const std::string_view word = text->substr(start, end - start);
  text->remove_prefix(end);
  return word;
}

template <typename Drop>
std::string_view withoutEnd(std::string_view text, Drop drop) {
  while (!text.empty() && drop(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view trimmed(std::string_view text) {
  text = withoutEnd(text, isSeparator);
  while (!text.empty() && isSeparator(text.front())) text.remove_prefix(1);
  return text;
}

// Lines are as wide as sqlplus counts: by characters if its output is UTF-8, else by bytes.
bool fillsLine(std::string_view line) {
  return line.size() == utility::kSpoolWidth || ut::columns(line) == utility::kSpoolWidth;
}

// The length of "ORA-942" and the like at the start of a text, or 0.
std::size_t errorCodeLength(std::string_view text) {
  static constexpr std::string_view kSources[] = {"ORA-", "SP2-", "TNS-", "PLS-", "RMAN-"};
  for (const std::string_view source : kSources) {
    if (!text.starts_with(source)) continue;
    std::size_t end = source.size();
    while (end < text.size() && ut::isDigit(text[end])) ++end;
    return end > source.size() ? end : 0;
  }
  return 0;
}

bool beginsWithError(std::string_view word) {
  const std::size_t end = errorCodeLength(word);
  return end > 0 && end < word.size() && word[end] == ':';
}

// An error code as a word, or the beginning of one, anywhere in a text. They are rare: the search
// is for the "-" that each of them has.
bool holdsErrorCode(std::string_view text) {
  for (std::size_t dash = text.find('-'); dash != text.npos; dash = text.find('-', dash + 1)) {
    for (const std::size_t length : {std::size_t{3}, std::size_t{4}}) {
      if (dash < length) continue;
      const std::size_t start = dash - length;
      const bool inWord =
          start > 0 && (ut::isLetter(text[start - 1]) || ut::isDigit(text[start - 1]));
      if (!inWord && errorCodeLength(text.substr(start)) > 0) return true;
    }
  }
  return false;
}

// Two messages come with a logon that succeeded: the password expires soon.
bool isWarning(std::string_view word) {
  return word.starts_with("ORA-28002:") || word.starts_with("ORA-28011:");
}

bool isErrorHeading(std::string_view text) {
  const std::string_view first = takeWord(&text);
  if (first == "ERROR:") return true;
  if (first != "ERROR") return false;
  const std::string_view second = takeWord(&text);
  return second.empty() || (second == "at" && takeWord(&text) == "line");
}

// True for "12 rows selected." or "no rows selected". A number that cannot be read is one that no
// answer has.
bool readRowCount(std::string_view text, std::uint64_t* count) {
  const std::string_view number = takeWord(&text), rows = takeWord(&text), verb = takeWord(&text);
  if (rows != "rows" && rows != "row") return false;
  if (verb != "selected." && verb != "selected") return false;
  *count = 0;
  if (number == "no") return true;
  const char* end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, *count);
  if (stop != end || error != std::errc()) *count = UINT64_MAX;
  return true;
}

// The kind of a line of several words. Messages are not padded, rows are (unless the profile trims
// them: then such a row is not counted, and the count does not fit).
LineKind kindOfWords(const utility::SpoolLine& line, bool fills, bool padded,
                     std::uint64_t* count) {
  if (readRowCount(line.text, count)) return LineKind::kRowCount;
  if (isErrorHeading(line.text)) return LineKind::kErrorHeading;
  if (!padded && holdsErrorCode(line.text)) return LineKind::kError;
  if (line.text.find("rows will be truncated") != line.text.npos) return LineKind::kError;
  if (!fills) return line.word == "Session" ? LineKind::kConfirmation : LineKind::kOther;
  return padded ? LineKind::kRow : LineKind::kFullRow;
}

void appendNew(std::string_view reading, std::size_t from, std::vector<std::string>* readings) {
  if (reading.empty()) return;
  const auto begin = readings->begin() + static_cast<std::ptrdiff_t>(from);
  if (std::find(begin, readings->end(), reading) == readings->end()) {
    readings->emplace_back(reading);
  }
}

// CSV puts quotes around a handle and doubles those in it.
std::string unquoted(std::string_view text) {
  std::string result;
  for (std::size_t i = 1; i + 1 < text.size(); ++i) {
    result += text[i];
    if (text[i] == '"' && text[i + 1] == '"') ++i;
  }
  return result;
}

}  // namespace

utility::SpoolLine utility::classifyLine(std::string_view line) {
  SpoolLine result = {};
  result.carriageReturn = line.ends_with('\r');
  if (result.carriageReturn) line.remove_suffix(1);
  result.body = withoutEnd(line, isBlank);
  if (result.body.empty()) return result;  // kBlank
  result.text = trimmed(result.body);
  std::string_view rest = result.text;
  result.word = takeWord(&rest);

  const bool fills = fillsLine(line);
  const bool padded = fills && result.body.size() < line.size();
  if (isWarning(result.word)) {
    result.kind = LineKind::kWarning;
  } else if (beginsWithError(result.word)) {
    result.kind = LineKind::kError;
  } else if (result.text.size() != result.word.size()) {
    result.kind = kindOfWords(result, fills, padded, &result.count);
  } else if (result.word.starts_with("ERROR") && isErrorHeading(result.text)) {
    result.kind = LineKind::kErrorHeading;
  } else if (result.word == "Session") {
    result.kind = LineKind::kConfirmation;
  } else {
    result.kind = fills && !padded ? LineKind::kFullRow : LineKind::kRow;
  }
  return result;
}

void utility::appendReadings(std::string_view body, std::vector<std::string>* readings) {
  const std::size_t from = readings->size();
  const std::string_view text = trimmed(body);
  std::string_view rest = text;
  const std::string_view word = takeWord(&rest);
  appendNew(word, from, readings);
  if (text.size() != word.size()) appendNew(text, from, readings);
  if (body.size() != text.size()) appendNew(body, from, readings);
  if (text.size() > 2 && text.front() == '"' && text.back() == '"') {
    appendNew(unquoted(text), from, readings);
  }
}
