// nfdate.cpp: dates and the run's formats, see nfdate.h.
#include "common/ut/nfdate.h"

#include <sys/time.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "common/ut/ascii.h"

namespace {

constexpr unsigned kLastYear = 9999;

// The formats by their numbers. Number 0 repeats number 1: an option text that is no number reads
// as 0.
constexpr const char* kDateFormats[] = {"%m/%d/%Y", "%m/%d/%Y", "%d-%m-%Y",
                                        "%Y-%m-%d", "%d.%m.%Y", "%Y.%m.%d"};
constexpr int kDateFormatCount = 6;

struct TimeFormat {
  char separator;
  bool twelveHours;
};
constexpr TimeFormat kTimeFormats[] = {
    {':', false}, {':', false}, {',', false}, {'.', false}, {':', true}};
constexpr int kTimeFormatCount = 5;

struct NumberFormat {
  char group, decimal;
};
constexpr NumberFormat kNumberFormats[] = {{',', '.'}, {',', '.'}, {',', ','}, {' ', ','},
                                           {' ', '.'}, {'.', ','}, {'\'', ','}};
constexpr int kNumberFormatCount = 7;

ut::RunFormats current = {1, 1, 1};

int inRange(int number, int count) { return number >= 0 && number < count ? number : 1; }

// Reads 1 to `width` digits and moves on past them.
bool readField(const char*& text, int width, unsigned* value, int* digits) {
  *value = 0;
  *digits = 0;
  for (; *digits < width && ut::isDigit(*text); ++text, ++*digits) {
    *value = *value * 10 + static_cast<unsigned>(*text - '0');
  }
  return *digits > 0;
}

bool isCalendarDay(unsigned year, unsigned month, unsigned day) {
  using namespace std::chrono;
  return year >= 1 && year <= kLastYear &&
         year_month_day(std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                        std::chrono::day(day))
             .ok();
}

const char* afterBlanks(const char* text) { return text + std::strspn(text, " \t"); }

// "+N": today plus N days; N may have a sign. Reading stops at a count that leaves the calendar
// from any day, before the sum can overflow.
unsigned short parseDaysAhead(const char* text, nfDate* date) {
  text = afterBlanks(text);
  const bool back = *text == '-';
  if (back || *text == '+') ++text;
  constexpr long kMostDays = 366L * static_cast<long>(kLastYear);
  long days = 0;
  for (; ut::isDigit(*text) && days <= kMostDays; ++text) days = days * 10 + (*text - '0');
  if (days > kMostDays) return ut::kInvalidDate;
  const nfDate result = ut::addDays(ut::localNow(), back ? -days : days);
  // A year before 1 is no valid one either: below 0 it wraps around, far past the last.
  if (ut::yearOf(result) < 1 || ut::yearOf(result) > kLastYear) return ut::kInvalidDate;
  *date = result;
  return 0;
}

// The digits of a number, with a separator between groups of three.
void groupDigits(std::uint64_t number, char group, char* out, std::size_t size) {
  char digits[24];
  const int length =
      std::snprintf(digits, sizeof digits, "%llu", static_cast<unsigned long long>(number));
  std::size_t used = 0;
  for (int i = 0; i < length && used + 2 < size; ++i) {
    if (i > 0 && (length - i) % 3 == 0) out[used++] = group;
    out[used++] = digits[i];
  }
  out[used] = '\0';
}

}  // namespace

int dateCmp(const nfDate& a, const nfDate& b) {
  static_assert(sizeof(nfDate) == 7, "the bytes in order are the order of dates");
  return std::memcmp(&a, &b, sizeof(nfDate));
}

// Walks the answer and the format side by side.
unsigned short dateParse(const char* text, nfDate* date, [[maybe_unused]] int flags) {
  if (*text == '+') return parseDaysAhead(text + 1, date);
  unsigned year = 0, month = 0, day = 0;
  for (const char* format = ut::date_fmt_str(); *format != '\0'; ++format) {
    if (*format != '%') {
      if (*text++ != *format) return ut::kInvalidDate;
      continue;
    }
    ++format;
    int digits = 0;
    unsigned* field = *format == 'Y' ? &year : *format == 'm' ? &month : &day;
    if (!readField(text, *format == 'Y' ? 4 : 2, field, &digits)) return ut::kInvalidDate;
    if (*format == 'Y' && digits != 4) return ut::kInvalidDate;
  }
  if (*afterBlanks(text) != '\0' || !isCalendarDay(year, month, day)) return ut::kInvalidDate;
  *date = ut::makeDate(year, month, day);
  return 0;
}

namespace ut {

void setRunFormats(const RunFormats& formats) {
  current = {inRange(formats.date, kDateFormatCount), inRange(formats.time, kTimeFormatCount),
             inRange(formats.number, kNumberFormatCount)};
}

const RunFormats& runFormats() { return current; }

const char* date_fmt_str() { return kDateFormats[current.date]; }

unsigned yearOf(const nfDate& date) { return date.year[0] * 256u + date.year[1]; }

nfDate makeDate(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                unsigned second) {
  const auto byte = [](unsigned value) { return static_cast<unsigned char>(value); };
  return {{byte(year / 256), byte(year % 256)},
          byte(month),
          byte(day),
          byte(hour),
          byte(minute),
          byte(second)};
}

nfDate addDays(const nfDate& date, long days) {
  using namespace std::chrono;
  const sys_days start =
      year_month_day(year(static_cast<int>(yearOf(date))), month(date.month), day(date.day));
  const year_month_day result(start + std::chrono::days(days));
  return makeDate(static_cast<unsigned>(static_cast<int>(result.year())),
                  static_cast<unsigned>(result.month()), static_cast<unsigned>(result.day()));
}

ShortText isoNow() {
  static std::time_t second = 0;  // of the text that was made last: a run makes many lines a second
  static ShortText result = {};
  const std::time_t now = std::time(nullptr);
  if (now == second) return result;
  second = now;
  struct tm local = {};
  ::localtime_r(&now, &local);
  char offset[8] = "";
  std::strftime(result.text, sizeof result.text, "%Y-%m-%dT%H:%M:%S", &local);
  std::strftime(offset, sizeof offset, "%z", &local);
  const std::size_t used = std::strlen(result.text);
  std::snprintf(result.text + used, sizeof result.text - used, "%.3s:%.2s", offset, offset + 3);
  return result;
}

ShortText isoDate(const nfDate& date) {
  ShortText result = {};
  std::snprintf(result.text, sizeof result.text, "%04u-%02u-%02uT%02u:%02u:%02u", yearOf(date),
                unsigned{date.month}, unsigned{date.day}, unsigned{date.hour},
                unsigned{date.minute}, unsigned{date.second});
  return result;
}

nfDate localNow(unsigned* milliseconds) {
  struct timeval now = {};
  ::gettimeofday(&now, nullptr);
  struct tm local = {};
  ::localtime_r(&now.tv_sec, &local);
  if (milliseconds != nullptr) *milliseconds = static_cast<unsigned>(now.tv_usec / 1000);
  const auto field = [](int value) { return static_cast<unsigned>(value); };
  return makeDate(field(local.tm_year + 1900), field(local.tm_mon + 1), field(local.tm_mday),
                  field(local.tm_hour), field(local.tm_min), field(local.tm_sec));
}

ShortText formatDate(const nfDate& date) {
  ShortText result = {};
  std::size_t used = 0;
  for (const char* format = date_fmt_str(); *format != '\0'; ++format) {
    char* out = result.text + used;
    const std::size_t room = sizeof result.text - used;
    int written = 1;
    if (*format != '%') {
      *out = *format;
    } else if (*++format == 'Y') {
      written = std::snprintf(out, room, "%04u", yearOf(date));
    } else {
      written = std::snprintf(out, room, "%02u", unsigned{*format == 'm' ? date.month : date.day});
    }
    used += static_cast<std::size_t>(written);
  }
  result.text[used] = '\0';
  return result;
}

ShortText formatTime(const nfDate& date) {
  const TimeFormat& format = kTimeFormats[current.time];
  unsigned hour = date.hour;
  const char* half = "";
  if (format.twelveHours) {  // hour 0 is 12 A, hour 12 is 12 P
    half = hour >= 12 ? "P" : "A";
    hour = hour % 12 == 0 ? 12 : hour % 12;
  }
  ShortText result = {};
  std::snprintf(result.text, sizeof result.text, "%02u%c%02u%c%02u%s", hour, format.separator,
                date.minute, format.separator, date.second, half);
  return result;
}

ShortText formatNumber(std::uint64_t number) {
  ShortText result = {};
  groupDigits(number, kNumberFormats[current.number].group, result.text, sizeof result.text);
  return result;
}

ShortText formatSize(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {"B", "KB", "MB", "GB", "TB", "PB", "EB"};
  std::uint64_t whole = bytes, rest = 0;
  std::size_t unit = 0;
  for (; whole >= 1024; ++unit) {
    rest = whole % 1024;
    whole /= 1024;
  }
  ShortText number = formatNumber(whole);
  ShortText result = {};
  if (unit == 0) {
    std::snprintf(result.text, sizeof result.text, "%.8s B", number.text);
    return result;
  }
  // Decimals are cut, not rounded: 1,023.99 KB must not become 1,024.00 KB.
  std::snprintf(result.text, sizeof result.text, "%.8s%c%02u %s", number.text,
                kNumberFormats[current.number].decimal, static_cast<unsigned>(rest * 100 / 1024),
                kUnits[unit]);
  return result;
}

}  // namespace ut
