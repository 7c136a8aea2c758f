#pragma once
// Calendar arithmetic of the relative date operators of the criteria: the
// ranges of "last week", "next X months" and the like, on the client's
// clock and locale.
#include <cstdint>

namespace zolsdk::relative_dates {

inline constexpr int64_t kDay = 86400;
inline constexpr int64_t kLastSecondOfDay = 86399;

double AddDays(double date, int64_t days);
double AddSeconds(double date, int64_t seconds);
// Adding months keeps the day of the month, falling back to the month's
// last day when that day does not exist (Jan 31 + 1 month = Feb 28 or 29).
double AddMonths(double date, int64_t months);
int DayOf(double date);
int WeekdaySunday(double date);
int WeekdayLocal(double date);

// The count of a last-X or next-X operator travels as a date whose serial
// number is X; it is rounded half to even as the platform rounds.
int64_t CountOf(double date);

// Range of the relative operators that the date-and-time routine and the
// date routine share. `weekday` is Ws for date-and-time, Wl for dates in
// the operators over X weeks. False for an operator that is no such range.
bool SharedRange(int32_t op, double now, int64_t x, int (*weekday)(double), double& start, double& end);

} // namespace zolsdk::relative_dates
