// dates.cpp: moments as sortable numbers, and their texts.
#include "sandbox/store/dates.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

std::chrono::year_month_day calendarDay(const DateParts& parts) {
  return {std::chrono::year(parts.year), std::chrono::month(static_cast<unsigned>(parts.month)),
          std::chrono::day(static_cast<unsigned>(parts.day))};
}

}  // namespace

bool isRealDate(const DateParts& parts) {
  return parts.year >= 1 && parts.year <= 9999 && calendarDay(parts).ok() && parts.hour <= 23 &&
         parts.minute <= 59 && parts.second <= 59;
}

Stamp toStamp(const DateParts& parts) {
  Stamp stamp = parts.year;
  for (const int part : {parts.month, parts.day, parts.hour, parts.minute, parts.second}) {
    stamp = stamp * 100 + part;
  }
  return stamp;
}

DateParts toParts(Stamp stamp) {
  const int date = static_cast<int>(stamp / 1000000);
  const int time = static_cast<int>(stamp % 1000000);
  return {date / 10000, date / 100 % 100, date % 100, time / 10000, time / 100 % 100, time % 100};
}

std::optional<Stamp> parseStamp(std::string_view text) {
  static constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:dd";
  if (text.size() != 10 && text.size() != kPattern.size()) return std::nullopt;
  Stamp stamp = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kPattern[i] == 'd' ? !isDigit(text[i]) : text[i] != kPattern[i]) return std::nullopt;
    if (isDigit(text[i])) stamp = stamp * 10 + (text[i] - '0');
  }
  if (text.size() == 10) stamp *= 1000000;
  if (!isRealDate(toParts(stamp))) return std::nullopt;
  return stamp;
}

std::string stampText(Stamp stamp) {
  const DateParts p = toParts(stamp);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                p.minute, p.second);
  return text;
}

std::int64_t dayNumber(Stamp stamp) {
  return std::chrono::sys_days(calendarDay(toParts(stamp))).time_since_epoch().count();
}

Stamp stampOf(std::int64_t dayNumber, int secondOfDay) {
  using std::chrono::days;
  const std::chrono::year_month_day day{
      std::chrono::sys_days(days(static_cast<days::rep>(dayNumber)))};
  return toStamp({static_cast<int>(day.year()),
                  static_cast<int>(static_cast<unsigned>(day.month())),
                  static_cast<int>(static_cast<unsigned>(day.day())), secondOfDay / 3600,
                  secondOfDay / 60 % 60, secondOfDay % 60});
}

Stamp now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  localtime_r(&seconds, &local);
  // isRealDate() refuses a leap second, so it counts as the second before it.
  return toStamp({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                  local.tm_min, local.tm_sec > 59 ? 59 : local.tm_sec});
}

}  // namespace sandbox
