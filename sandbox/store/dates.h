// dates.h: moments as sortable numbers, and their texts.
//
// A Stamp holds the decimal digits of a local date and time, YYYYMMDDhhmmss: 15 January 2024,
// 07:08:09 is 20240115070809. Stamps compare as the moments do, read well in the database, and need
// no time zone: the store and the catalogs of a site use the same wall clock.
#ifndef SANDBOX_STORE_DATES_H
#define SANDBOX_STORE_DATES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

using Stamp = std::int64_t;

struct DateParts {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

// True for a day that the calendar has, from year 1 to 9999, and a time from 00:00:00 to 23:59:59.
bool isRealDate(const DateParts& parts);

Stamp toStamp(const DateParts& parts);
DateParts toParts(Stamp stamp);

// "YYYY-MM-DD" (midnight) or "YYYY-MM-DDThh:mm:ss"; nothing for any other text and for a date that
// does not exist.
std::optional<Stamp> parseStamp(std::string_view text);
// "YYYY-MM-DDThh:mm:ss".
std::string stampText(Stamp stamp);

// Days since 1 January 1970.
std::int64_t dayNumber(Stamp stamp);
Stamp stampOf(std::int64_t dayNumber, int secondOfDay);

// The host's clock, local time.
Stamp now();

}  // namespace sandbox

#endif  // SANDBOX_STORE_DATES_H
