// dialogue.cpp: dates, answers, yes or no, see dialogue.h.
#include "utility/dialogue.h"

#include <cstdio>
#include <cstring>

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"

namespace {

constexpr std::size_t kDateTextSize = 16;
constexpr int kDateAnswerSize = 31;

struct DateParts {
  char year[5];
  char month[3];
  char day[3];
};

// Joins the three parts, each at its position in the format.
void arrange(const DateParts& parts, int yearAt, int dayAt, char separator, char* out) {
  const char* order[3] = {parts.month, parts.month, parts.month};
  order[yearAt] = parts.year;
  order[dayAt] = parts.day;
  std::snprintf(out, kDateTextSize, "%s%c%s%c%s", order[0], separator, order[1], separator,
                order[2]);
}

}  // namespace

void utGetDefaultDates(char* start, char* end) {
  const char* format = ut::date_fmt_str();
  const char separator = format[2];
  int yearAt = 0, dayAt = 0;
  const char* conversion = std::strchr(format, '%');
  for (int at = 0; at < 3 && conversion != nullptr; ++at) {
    const char letter = conversion[1];
    if (letter == 'Y' || letter == 'y') yearAt = at;
    if (letter == 'd') dayAt = at;
    conversion = std::strchr(conversion + 1, '%');
  }
  const nfDate today = ut::localNow();
  DateParts parts = {};
  std::snprintf(parts.year, sizeof parts.year, "%04u", ut::yearOf(today) % 10000);
  std::snprintf(parts.month, sizeof parts.month, "%02u", today.month % 100u);
  std::snprintf(parts.day, sizeof parts.day, "%02u", today.day % 100u);
  arrange({"1990", "01", "01"}, yearAt, dayAt, separator, start);
  arrange(parts, yearAt, dayAt, separator, end);
}

namespace {

// Asks for one date until the answer is valid. True when the default was taken.
bool askDate(nls::Message<'s'> prompt, const char* defaultText, nfDate* date) {
  char answer[kDateAnswerSize];
  const auto ask = [&] {
    nlprintf(prompt, defaultText);
    ut::ignoreResult(ReadAnswer(answer, sizeof answer), "a cut answer is judged as it is");
  };
  nlprintf(msg::kBlankLine);
  ask();
  nlprintf(msg::kBlankLine);
  while (*answer != '\0') {
    const unsigned short rc = dateParse(answer, date, 0);
    if (rc == 0) return false;
    nlprintf(msg::kBadDate);
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: dateParse() failed rc = %d\n", "utGetDates()", rc);
    ask();
  }
  ut::ignoreResult(dateParse(defaultText, date, 0), "a default follows the format");
  return true;
}

}  // namespace

void utGetDates(nfDate* start, nfDate* end, int& usedDefaultEnd) {
  static constexpr char kFunction[] = "utGetDates()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  TRACE(TR_ORCLEVEL1, " %s: Calling utGetDefaultDates\n", kFunction);
  char startText[kDateTextSize], endText[kDateTextSize];
  utGetDefaultDates(startText, endText);
  for (;;) {
    ut::ignoreResult(askDate(msg::kAskStartDate, startText, start),
                     "only the end date's default matters");
    // Not reset by another round: whoever once took the default end date is treated as having taken
    // it. Kept on purpose, pinned by FileList.AsksForDatesUntilTheRangeIsValid.
    if (askDate(msg::kAskEndDate, endText, end)) usedDefaultEnd = 1;
    if (dateCmp(*end, *start) >= 0) break;
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kEndBeforeStart);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT\n", kFunction);
}

ut::ReadResult ReadAnswer(char* buffer, int size) {
  char line[1024];
  std::fflush(stdout);
  const ut::ReadResult result = ut::readLine(stdin, line, sizeof line);
  const char* start = line + std::strspn(line, " ");
  const bool whole = ut::copyText(buffer, static_cast<std::size_t>(size), start);
  ut::wipe(line, sizeof line);  // with script input it may have been a password
  return whole ? result : ut::ReadResult::kCut;
}

int PromptYN() { return nls::ask(msg::kAskContinue, msg::kNotAnAnswer) == 0 ? 1 : 0; }
