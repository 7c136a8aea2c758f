#include "dialects/relative_dates.hpp"

#include <cmath>

#include "zolsdk/schema/enums.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk::relative_dates {

namespace {
double Jan1(int year) { return DateSerial(year, 1, 1); }
int YearOf(double date) { return SplitDate(date).year; }
} // namespace

double AddDays(double date, int64_t days) { return DateAddSeconds(date, days * kDay); }
double AddSeconds(double date, int64_t seconds) { return DateAddSeconds(date, seconds); }

double AddMonths(double date, int64_t months) {
    DateParts p = SplitDate(date);
    const int64_t total = static_cast<int64_t>(p.year) * 12 + (p.month - 1) + months;
    const int64_t year = total >= 0 ? total / 12 : -((-total + 11) / 12);
    const int month = static_cast<int>(total - year * 12) + 1;
    const double first = DateSerial(static_cast<int>(year), month, 1);
    const int daysInMonth = static_cast<int>(DateSerial(static_cast<int>(year), month + 1, 1) - first);
    p.year = static_cast<int>(year);
    p.month = month;
    if (p.day > daysInMonth) p.day = daysInMonth;
    return JoinDate(p);
}

int DayOf(double date) { return SplitDate(date).day; }
int WeekdaySunday(double date) { return Weekday(date, 1); }
int WeekdayLocal(double date) { return Weekday(date, UserLocale::Current().firstDayOfWeek); }

int64_t CountOf(double date) { return static_cast<int64_t>(std::nearbyint(date)); }

bool SharedRange(int32_t op, double now, int64_t x, int (*weekday)(double), double& start, double& end) {
    switch (op) {
    case dcoLastWeek: {
        const double t = DatePart(AddDays(now, -WeekdayLocal(now)));
        start = AddDays(t, -6);
        end = AddSeconds(t, kLastSecondOfDay);
        return true;
    }
    case dcoThisWeek:
        start = DatePart(AddDays(now, 1 - WeekdayLocal(now)));
        end = AddSeconds(AddDays(start, 7), -1);
        return true;
    case dcoThisMonth:
        start = DatePart(AddDays(now, 1 - DayOf(now)));
        end = AddSeconds(AddMonths(start, 1), -1);
        return true;
    case dcoLastMonth: {
        const double t = DatePart(AddDays(now, -DayOf(now)));
        start = AddDays(t, 1 - DayOf(t));
        end = AddSeconds(t, kLastSecondOfDay);
        return true;
    }
    case dcoNextMonth: {
        const double t = AddMonths(now, 1);
        start = DatePart(AddDays(t, 1 - DayOf(t)));
        end = AddSeconds(AddMonths(start, 1), -1);
        return true;
    }
    case dcoThisYear:
    case dcoLastYear:
    case dcoNextYear:
        start = Jan1(YearOf(now) + (op == dcoThisYear ? 0 : op == dcoLastYear ? -1 : 1));
        end = AddSeconds(AddMonths(start, 12), -1);
        return true;
    case dcoLastXWeeks: {
        const double t = DatePart(AddDays(now, -7 * x));
        start = AddDays(t, 1 - weekday(t));
        end = now;
        return true;
    }
    case dcoNextXWeeks: {
        const double t = DatePart(AddDays(now, 7 * x));
        start = now;
        end = AddSeconds(AddDays(t, weekday(t)), -1);
        return true;
    }
    case dcoLastXMonths: {
        const double t = DatePart(AddMonths(now, -x));
        start = AddDays(t, 1 - DayOf(t));
        end = now;
        return true;
    }
    case dcoNextXMonths: {
        const double t = DatePart(AddMonths(now, x));
        const double u = AddDays(t, 1 - DayOf(t));
        start = now;
        end = AddSeconds(AddMonths(u, 1), -1);
        return true;
    }
    case dcoLastXYears:
        start = Jan1(static_cast<int>(YearOf(now) - x));
        end = now;
        return true;
    case dcoNextXYears:
        start = now;
        end = AddSeconds(Jan1(static_cast<int>(YearOf(now) + x + 1)), -1);
        return true;
    default: return false;
    }
}

} // namespace zolsdk::relative_dates
