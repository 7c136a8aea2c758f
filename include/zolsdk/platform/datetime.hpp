#pragma once
// Dates are the platform's date values: days since 1899-12-30 as a double,
// the time of day as the fraction. Before that day the integer part counts
// back and the fraction still runs forward (-1.25 is 1899-12-29 06:00).
#include <cstdint>

#include "zolsdk/export.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

struct ZOLSDK_API DateParts {
    int year = 1899, month = 12, day = 30;
    int hour = 0, minute = 0, second = 0;
};

// Calendar date to a date value; months and days out of range roll over as
// the platform's DateSerial does (month 13 is January of the next year).
// Years 0 to 29 mean 2000 to 2029, years 30 to 99 mean 1930 to 1999; a
// result outside 0100-01-01 to 9999-12-31 fails with 5.
ZOLSDK_API double DateSerial(int year, int month, int day);
ZOLSDK_API double TimeSerial(int hour, int minute, int second);
// Parts of a date value, the time rounded to the nearest second.
ZOLSDK_API DateParts SplitDate(double date);
ZOLSDK_API double JoinDate(const DateParts& p);
// Adds seconds on the calendar (crossing midnight and months as it must).
ZOLSDK_API double DateAddSeconds(double date, int64_t seconds);
// 1 to 7, day 1 being `firstDayOfWeek` (1 Sunday ... 7 Saturday).
ZOLSDK_API int Weekday(double date, int firstDayOfWeek = 1);
// The whole days of a date value (its date part as a date value).
ZOLSDK_API double DatePart(double date);

// The library's neutral text forms: "yyyy-mm-dd", "hh:nn:ss", or both with a
// blank between them. A date of day 0 shows its time alone, a date at
// midnight its date alone (as the platform's own date-to-text does).
ZOLSDK_API String DateText(double date);
// Reads "yyyy-mm-dd[ hh:nn[:ss]]", "yyyy/mm/dd...", "m/d/yyyy[ ...]",
// "hh:nn[:ss]" and "yyyymmddThhnnss". Returns false if it is none of them.
ZOLSDK_API bool TryParseDate(StringView text, double& out);

} // namespace zolsdk
