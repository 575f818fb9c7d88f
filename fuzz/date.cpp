// date.cpp: dates as a user types them, in every format of the run; the C library's calendar is the
// judge. The first byte of the input chooses the format.
#include <cstring>
#include <ctime>

#include "common/ut/nfdate.h"
#include "fuzz/fuzz.h"

namespace {

using fuzz::hold;

void checkAgainstTheCalendar(const char* text, const nfDate& date) {
  struct tm read = {};
  const char* end = ::strptime(text, ut::date_fmt_str(), &read);
  hold(end != nullptr && end[std::strspn(end, " \t")] == '\0',
       "an accepted date has the run's format, and blanks at most after it");
  ::timegm(&read);  // moves a day that its month lacks into the next month
  const nfDate expected =
      ut::makeDate(static_cast<unsigned>(read.tm_year + 1900),
                   static_cast<unsigned>(read.tm_mon + 1), static_cast<unsigned>(read.tm_mday));
  hold(dateCmp(date, expected) == 0, "an accepted date exists");
}

}  // namespace

void fuzz::check(const std::string&, char* text) {
  ut::setRunFormats({(*text & 255) % 6, 1, 1});
  if (*text != '\0') ++text;
  const nfDate untouched = ut::makeDate(1, 2, 3, 4, 5, 6);
  nfDate date = untouched;
  const unsigned short rc = dateParse(text, &date, 0);
  if (rc != 0) {
    return hold(rc == 2525 && dateCmp(date, untouched) == 0, "a refusal changes nothing");
  }
  nfDate again = {};
  hold(dateParse(ut::formatDate(date).text, &again, 0) == 0 && dateCmp(date, again) == 0,
       "a date that is shown and read is the same date");
  if (*text != '+') checkAgainstTheCalendar(text, date);
}
