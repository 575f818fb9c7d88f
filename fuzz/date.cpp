// date.cpp: dates as a user types them, in every format of the run; the C library's calendar is the
// judge. The first byte of the input chooses the format.
#include <ctime>

#include "common/ut/nfdate.h"
#include "fuzz/fuzz.h"

namespace {

// Whether the C library reads the same date from a text that was accepted.
bool isOfTheCalendar(const char* text, const nfDate& date) {
  struct tm read = {};
  const char* end = ::strptime(text, ut::date_fmt_str(), &read);
  // Blanks may follow.
  if (end == nullptr || end[std::strspn(end, " \t")] != '\0') return false;
  const std::time_t seconds = ::timegm(&read);  // moves a day that its month lacks to the next
  ::gmtime_r(&seconds, &read);
  return static_cast<int>(ut::yearOf(date)) == read.tm_year + 1900 &&
         date.month == read.tm_mon + 1 && date.day == read.tm_mday;
}

}  // namespace

void fuzz::check(const std::string&, char* text) {
  ut::setRunFormats({(*text & 255) % 6, 1, 1});
  if (*text != '\0') ++text;
  const nfDate untouched = ut::makeDate(1, 2, 3, 4, 5, 6);
  nfDate date = untouched, again = {};
  const unsigned short rc = dateParse(text, &date, 0);
  if (rc != 0) {
    return hold(rc == 2525 && dateCmp(date, untouched) == 0, "a refusal changes nothing");
  }
  hold(dateParse(ut::formatDate(date).text, &again, 0) == 0 && dateCmp(date, again) == 0,
       "a date that is shown and read is the same date");
  hold(*text == '+' || isOfTheCalendar(text, date), "an accepted date has the format and exists");
}
