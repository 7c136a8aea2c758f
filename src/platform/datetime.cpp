#include "zolsdk/platform/datetime.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "zolsdk/platform/error.hpp"

namespace zolsdk {

namespace {
// Days from 1970-01-01 of a proleptic Gregorian date (H. Hinnant's method).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

void CivilFromDays(int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t yy = static_cast<int64_t>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yy + (m <= 2));
}

const int64_t kEpochShift = DaysFromCivil(1899, 12, 30); // day 0 of date values
const int64_t kFirstDay = DaysFromCivil(100, 1, 1) - kEpochShift;    // 0100-01-01
const int64_t kLastDay = DaysFromCivil(9999, 12, 31) - kEpochShift;  // 9999-12-31

// Date value <-> seconds on a straight line (day * 86400 + time).
int64_t ToLinearSeconds(double v) {
    double days = std::trunc(v);
    double frac = std::fabs(v - days);
    int64_t secs = static_cast<int64_t>(std::llround(frac * 86400.0));
    return static_cast<int64_t>(days) * 86400 + secs;
}

double FromLinearSeconds(int64_t s) {
    int64_t days = s >= 0 ? s / 86400 : -((-s + 86399) / 86400);
    int64_t rem = s - days * 86400;
    double frac = static_cast<double>(rem) / 86400.0;
    return days < 0 ? static_cast<double>(days) - frac : static_cast<double>(days) + frac;
}
} // namespace

double DateSerial(int year, int month, int day) {
    // Two-digit years fall in the window 1930 to 2029, before any rollover.
    if (year >= 0 && year <= 29) year += 2000;
    else if (year >= 30 && year <= 99) year += 1900;
    // Months roll over into years; days are added on top of day 1.
    int64_t m0 = static_cast<int64_t>(month) - 1;
    int64_t y = year + (m0 >= 0 ? m0 / 12 : -((-m0 + 11) / 12));
    int64_t m = m0 - (y - year) * 12 + 1;
    if (y < 100 || y > 9999) RaisePlatform(err::InvalidCall);
    int64_t days = DaysFromCivil(y, static_cast<unsigned>(m), 1) + (static_cast<int64_t>(day) - 1) - kEpochShift;
    // The days can carry the date out of the calendar as well.
    if (days < kFirstDay || days > kLastDay) RaisePlatform(err::InvalidCall);
    return static_cast<double>(days);
}

double TimeSerial(int hour, int minute, int second) {
    int64_t s = static_cast<int64_t>(hour) * 3600 + minute * 60 + second;
    return FromLinearSeconds(s);
}

DateParts SplitDate(double date) {
    int64_t s = ToLinearSeconds(date);
    int64_t days = s >= 0 ? s / 86400 : -((-s + 86399) / 86400);
    int64_t rem = s - days * 86400;
    DateParts p;
    CivilFromDays(days + kEpochShift, p.year, p.month, p.day);
    p.hour = static_cast<int>(rem / 3600);
    p.minute = static_cast<int>(rem / 60 % 60);
    p.second = static_cast<int>(rem % 60);
    return p;
}

double JoinDate(const DateParts& p) {
    int64_t days = DaysFromCivil(p.year, static_cast<unsigned>(p.month), static_cast<unsigned>(p.day)) - kEpochShift;
    return FromLinearSeconds(days * 86400 + p.hour * 3600 + p.minute * 60 + p.second);
}

double DateAddSeconds(double date, int64_t seconds) {
    return FromLinearSeconds(ToLinearSeconds(date) + seconds);
}

int Weekday(double date, int firstDayOfWeek) {
    int64_t days = ToLinearSeconds(date);
    days = days >= 0 ? days / 86400 : -((-days + 86399) / 86400);
    // Day 0 (1899-12-30) was a Saturday: 7 with Sunday first.
    int sundayBased = static_cast<int>(((days + 6) % 7 + 7) % 7) + 1;
    return ((sundayBased - firstDayOfWeek) % 7 + 7) % 7 + 1;
}

double DatePart(double date) {
    DateParts p = SplitDate(date);
    p.hour = p.minute = p.second = 0;
    return JoinDate(p);
}

namespace {
// `n` as printf's "%0<width>d" writes it, at `out`; answers the end.
char16_t* Digits(char16_t* out, int n, int width) {
    char tmp[16];
    const char* end = std::to_chars(tmp, tmp + sizeof tmp, n).ptr;
    const char* p = tmp;
    if (*p == '-') {
        *out++ = u'-';
        ++p;
        --width;
    }
    for (int pad = width - static_cast<int>(end - p); pad > 0; --pad) *out++ = u'0';
    while (p != end) *out++ = static_cast<char16_t>(*p++);
    return out;
}
} // namespace

String DateText(double date) {
    DateParts p = SplitDate(date);
    bool hasTime = p.hour || p.minute || p.second;
    bool isDayZero = p.year == 1899 && p.month == 12 && p.day == 30;
    char16_t buf[48];
    char16_t* e = buf;
    if (!(isDayZero && hasTime)) {
        e = Digits(e, p.year, 4);
        *e++ = u'-';
        e = Digits(e, p.month, 2);
        *e++ = u'-';
        e = Digits(e, p.day, 2);
        if (!hasTime) return String(buf, e);
        *e++ = u' ';
    }
    e = Digits(e, p.hour, 2);
    *e++ = u':';
    e = Digits(e, p.minute, 2);
    *e++ = u':';
    e = Digits(e, p.second, 2);
    return String(buf, e);
}

namespace {
bool ReadInt(StringView t, size_t& i, int maxDigits, int& out) {
    size_t start = i;
    out = 0;
    while (i < t.size() && t[i] >= u'0' && t[i] <= u'9' && static_cast<int>(i - start) < maxDigits) {
        out = out * 10 + (t[i] - u'0');
        ++i;
    }
    return i > start;
}

bool ReadTime(StringView t, size_t& i, DateParts& p) {
    if (!ReadInt(t, i, 2, p.hour)) return false;
    if (i >= t.size() || t[i] != u':') return false;
    ++i;
    if (!ReadInt(t, i, 2, p.minute)) return false;
    if (i < t.size() && t[i] == u':') {
        ++i;
        if (!ReadInt(t, i, 2, p.second)) return false;
        if (i < t.size() && t[i] == u'.') { // fraction of a second: dropped
            ++i;
            int ignored;
            ReadInt(t, i, 9, ignored);
        }
    }
    return p.hour < 24 && p.minute < 60 && p.second < 60;
}

bool ValidDay(const DateParts& p) {
    if (p.month < 1 || p.month > 12 || p.day < 1 || p.year < 100 || p.year > 9999) return false;
    static const int dim[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (p.day > dim[p.month - 1]) return false;
    if (p.month == 2 && p.day == 29) {
        bool leap = (p.year % 4 == 0 && p.year % 100 != 0) || p.year % 400 == 0;
        if (!leap) return false;
    }
    return true;
}
} // namespace

bool TryParseDate(StringView text, double& out) {
    String s = Trim(text);
    StringView t = s;
    DateParts p;
    size_t i = 0;
    // Compact form yyyymmddThhnnss.
    if (t.size() == 15 && t[8] == u'T') {
        int y, m, d, h, n, sec;
        size_t k = 0;
        if (!ReadInt(t, k, 4, y) || !ReadInt(t, k, 2, m) || !ReadInt(t, k, 2, d)) return false;
        k = 9;
        if (!ReadInt(t, k, 2, h) || !ReadInt(t, k, 2, n) || !ReadInt(t, k, 2, sec) || k != 15) return false;
        p = {y, m, d, h, n, sec};
        if (!ValidDay(p) || h > 23 || n > 59 || sec > 59) return false;
        out = JoinDate(p);
        return true;
    }
    // Time alone.
    size_t colon = t.find(u':');
    size_t dash = t.find_first_of(u"-/");
    if (colon != StringView::npos && (dash == StringView::npos || dash > colon)) {
        if (!ReadTime(t, i, p) || i != t.size()) return false;
        out = TimeSerial(p.hour, p.minute, p.second);
        return true;
    }
    int a, b, c;
    if (!ReadInt(t, i, 4, a)) return false;
    size_t firstLen = i;
    if (i >= t.size() || (t[i] != u'-' && t[i] != u'/')) return false;
    char16_t sep = t[i++];
    if (!ReadInt(t, i, 2, b) || i >= t.size() || t[i] != sep) return false;
    ++i;
    if (!ReadInt(t, i, 4, c)) return false;
    if (firstLen == 4) p = {a, b, c, 0, 0, 0};          // y-m-d
    else if (sep == u'/') p = {c, a, b, 0, 0, 0};       // m/d/y
    else return false;
    if (!ValidDay(p)) return false;
    if (i < t.size()) {
        if (t[i] != u' ' && t[i] != u'T') return false;
        while (i < t.size() && (t[i] == u' ' || t[i] == u'T')) ++i;
        if (!ReadTime(t, i, p) || i != t.size()) return false;
    }
    out = JoinDate(p);
    return true;
}

} // namespace zolsdk
