// date.cpp: date answers in every format of the run, judged by the C library's calendar. The first
// byte chooses the format.
#include "common/ut/nfdate.h"
#include "fuzz/fuzz.h"

void fuzz::check(const std::string&, char* text) {
  ut::setRunFormats({(*text & 255) % 6, 1, 1});
  if (*text != '\0') ++text;
  nfDate before = ut::makeDate(1, 2, 3, 4, 5, 6), date = before, again = before;
  const unsigned short rc = dateParse(text, &date, 0);
  if (rc != 0) return hold(rc == 2525 && dateCmp(date, before) == 0, "a refusal changes nothing");
  hold(!dateParse(ut::formatDate(date).text, &again, 0) && !dateCmp(date, again), "it reads back");
  struct tm read = {};
  const char* end = ::strptime(text, ut::date_fmt_str(), &read);
  ::timegm(&read);  // a day that its month lacks becomes one of the next month
  const auto field = [](int value) { return static_cast<unsigned>(value); };
  again = ut::makeDate(field(read.tm_year + 1900), field(read.tm_mon + 1), field(read.tm_mday));
  hold(*text == '+' || (end && !*end && dateCmp(date, again) == 0), "an accepted date exists");
}
