// nfdate_test.cpp: dates as users type them, and how dates, times, numbers and sizes are shown.
#include "common/ut/nfdate.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using std::pair, std::string, std::to_string;

bool parses(const string& answer, nfDate* date) { return dateParse(answer.c_str(), date, 0) == 0; }

TEST(Dates, FollowTheirFormatToTheLetter) {
  const string kLeapDay[] = {"02/29/2024", "02/29/2024", "29-02-2024",
                             "2024-02-29", "29.02.2024", "2024.02.29"};
  const nfDate untouched = ut::makeDate(1, 2, 3, 4, 5, 6), leapDay = {{7, 232}, 2, 29, 0, 0, 0};
  nfDate date;
  for (int format = 0; format < 6; ++format) {
    ut::setRunFormats({format, 1, 1});
    EXPECT_EQ(kLeapDay[format], ut::formatDate(leapDay).text);
    for (const string& answer : kLeapDay) {
      date = untouched;
      EXPECT_EQ(answer == kLeapDay[format], parses(answer, &date)) << answer << " in " << format;
      EXPECT_EQ(0, dateCmp(date, answer == kLeapDay[format] ? leapDay : untouched));
    }
  }
  ut::setRunFormats({3, 1, 1});
  for (const auto& [answers, good] :
       {pair("2026-1-2|2026-12-31|9999-12-31|0001-01-01|2000-02-29|2026-01-01 \t |", true),
        {"|1900-02-29|2026-02-29|2026-04-31|2026-00-10|2026-13-10|2026-10-00|2026-10-32|0000-01-01|"
         "26-01-01|02026-01-01|2026-001-01|2026-01-011|2026-01-01 x| 2026-01-01|2026-01-|2026-01|"
         "2026-01--1|2026- 1- 1|-2026-01-01|2026/01/01|%Y-%m-%d|2026-01-01-01|4294969322-1-1",
         false}}) {
    std::istringstream list(answers);
    for (string answer; std::getline(list, answer, '|');) {
      EXPECT_EQ(good, parses(answer, &date)) << "'" << answer << "'";
    }
  }
  ut::setRunFormats({1, 1, 1});
}

TEST(Dates, CountDaysAheadUpToTheEndOfTheCalendar) {
  using namespace std::chrono;
  nfDate date;
  const auto ahead = [&](const string& answer) {
    EXPECT_TRUE(parses(answer, &date)) << answer;
    return sys_days(year(static_cast<int>(ut::yearOf(date))) / date.month / date.day);
  };
  const long long left = (sys_days(year(9999) / 12 / 31) - ahead("+")).count();
  const long long gone = (ahead("+") - sys_days(year(1) / 1 / 1)).count();
  for (const long long days : {0LL, 31LL, 36525LL, -366LL, left, -gone}) {
    EXPECT_EQ(days, (ahead("+" + to_string(days)) - ahead("+0")).count());
  }
  for (const auto& [answer, same] :
       {pair("+x", "+0"), {"++3", "+3"}, {"+ \t-3 days", "+-3"}, {"+- 3", "+0"}, {"+-+3", "+0"}}) {
    EXPECT_TRUE(ahead(answer) == ahead(same)) << answer;
  }
  for (const string& out :
       {to_string(left + 1), to_string(-gone - 1), to_string(-gone - 367), string(40, '9')}) {
    EXPECT_FALSE(parses("+" + out, &date)) << out;
  }
}

TEST(Dates, TimesAndNumbersAreShownInTheRunsFormat) {
  const char* const kShown[] = {
      "00:00:07 23:00:07 1,234 1.17 MB",   "00:00:07 23:00:07 1,234 1.17 MB",
      "00,00,07 23,00,07 1,234 1,17 MB",   "00.00.07 23.00.07 1 234 1,17 MB",
      "12:00:07A 11:00:07P 1 234 1.17 MB", "00:00:07 23:00:07 1.234 1,17 MB",
      "00:00:07 23:00:07 1'234 1,17 MB",   "00:00:07 23:00:07 1,234 1.17 MB"};
  for (int format = 7; format >= 0; --format) {
    ut::setRunFormats({1, format, format});
    EXPECT_EQ(kShown[format], ut::formatTime(ut::makeDate(1, 1, 1, 0, 0, 7)).text + string(" ") +
                                  ut::formatTime(ut::makeDate(1, 1, 1, 23, 0, 7)).text + " " +
                                  ut::formatNumber(1234).text + " " + ut::formatSize(1234567).text);
  }
  ut::setRunFormats({6, 5, -1});  // no such numbers
  EXPECT_EQ("1,023 B|1,023.99 KB|15.99 EB|18,446,744,073,709,551,615|123,456",
            ut::formatSize(1023).text + string("|") + ut::formatSize(1048575).text + "|" +
                ut::formatSize(~0ull).text + "|" + ut::formatNumber(~0ull).text + "|" +
                ut::formatNumber(123456).text);
  const std::time_t now = std::time(nullptr);
  EXPECT_EQ((std::ostringstream() << std::put_time(std::localtime(&now), "%m/%d/%Y")).str(),
            ut::formatDate(ut::localNow()).text);
}

}  // namespace
