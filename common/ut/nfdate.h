// nfdate.h: dates, and the run's formats of dates, times, numbers and sizes.
//
// A run has one set of formats. The message system sets it when it starts (setRunFormats), and
// everything that prints a date uses it, the trace writer included. Formatting never allocates,
// because the trace writer must not.
#ifndef COMMON_UT_NFDATE_H
#define COMMON_UT_NFDATE_H

#include <cstdint>

// A date in seven bytes, laid out so that comparing the bytes compares the dates.
//
//   0..1  year, big-endian
//   2     month, 1 to 12
//   3     day, 1 to 31
//   4..6  hour, minute, second
//
// All bytes 0 mean minus infinity; year 65535 with the rest 0 means plus infinity.
struct nfDate {
  unsigned char year[2];
  unsigned char month, day, hour, minute, second;
};

// Less than, equal to or greater than 0 as `a` is earlier than, the same as or later than `b`,
// compared field by field from the year down.
[[nodiscard]] int dateCmp(const nfDate& a, const nfDate& b);

// Reads a date answer into `date`, with the time 0:00:00. "+N" is today's local date plus N days;
// "+-N" is N days ago, and no number means 0 days. Anything else must follow the run's date format
// to the letter: every field a number no wider than in the format, a year of four digits, a day
// that exists in its month and nothing but blanks left over. `flags` is reserved and 0. Returns 0,
// or ut::kInvalidDate with `date` unchanged.
//
// What follows N is ignored: "+3x" is "+3". Kept on purpose, pinned by
// Dates.CountDaysAheadUpToTheEndOfTheCalendar.
[[nodiscard]] unsigned short dateParse(const char* text, nfDate* date, int flags);

namespace ut {

inline constexpr unsigned short kInvalidDate = 2525;

// The run's formats of dates, times and numbers, by their numbers in the options file. A number out
// of range counts as 1.
struct RunFormats {
  int date;    // 0 to 5
  int time;    // 0 to 4
  int number;  // 0 to 6
};

void setRunFormats(const RunFormats& formats);
const RunFormats& runFormats();

// The run's date format in strftime's notation: %Y, %m and %d, once each.
const char* date_fmt_str();

// A formatted date, time, number or size. The longest is a number of 20 digits with separators.
struct ShortText {
  char text[32];
};

unsigned yearOf(const nfDate& date);
nfDate makeDate(unsigned year, unsigned month, unsigned day, unsigned hour = 0, unsigned minute = 0,
                unsigned second = 0);

// The local date and time; `milliseconds`, if not null, receives the part of the second (0 to 999).
nfDate localNow(unsigned* milliseconds = nullptr);

// Another day, with the time 0:00:00; `days` may be below 0. The year may leave 1 to 9999.
nfDate addDays(const nfDate& date, long days);

// For programs to read (ISO 8601), whatever the run's formats: the local time with its offset from
// UTC, "2026-11-21T03:15:00+01:00"; and a date and time without one.
ShortText isoNow();
ShortText isoDate(const nfDate& date);

ShortText formatDate(const nfDate& date);
ShortText formatTime(const nfDate& date);

// A whole number with the run's separators between groups of three digits.
ShortText formatNumber(std::uint64_t number);

// A size in the largest unit that leaves at least 1 (bytes, KB, MB, ... of 1024 each), with two
// decimals from KB on; at most 12 characters.
ShortText formatSize(std::uint64_t bytes);

}  // namespace ut

#endif  // COMMON_UT_NFDATE_H
