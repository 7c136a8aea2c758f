#include "zolsdk/platform/locale.hpp"

#include <langinfo.h>
#include <clocale>
#include <ctime>
#include <mutex>
#include <sys/time.h>

#include "zolsdk/platform/datetime.hpp"

namespace zolsdk {

namespace {
UserLocale ReadProcessLocale() {
    UserLocale l;
    // The process locale as the host program set it; the library does not
    // call setlocale itself.
    if (const lconv* lc = std::localeconv()) {
        if (lc->decimal_point && *lc->decimal_point) l.decimalSeparator = FromUtf8(lc->decimal_point).substr(0, 1);
        l.thousandSeparator = lc->thousands_sep && *lc->thousands_sep ? FromUtf8(lc->thousands_sep).substr(0, 1) : u"";
    }
#ifdef _NL_TIME_FIRST_WEEKDAY
    // glibc: 1 is Sunday, as here.
    const char* fw = nl_langinfo(_NL_TIME_FIRST_WEEKDAY);
    if (fw && *fw >= 1 && *fw <= 7) l.firstDayOfWeek = *fw;
#endif
    return l;
}

struct State {
    std::mutex mu;
    bool read = false;
    UserLocale locale;
    std::optional<double> now;
};
State& S() {
    static State s;
    return s;
}
} // namespace

const UserLocale& UserLocale::Current() {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    if (!s.read) {
        s.locale = ReadProcessLocale();
        s.read = true;
    }
    return s.locale;
}

void UserLocale::Set(const UserLocale& l) {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    s.locale = l;
    s.read = true;
}

void UserLocale::Reset() {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    s.read = false;
}

double Clock::Now() {
    State& s = S();
    {
        std::lock_guard<std::mutex> g(s.mu);
        if (s.now) return *s.now;
    }
    timeval tv{};
    gettimeofday(&tv, nullptr);
    time_t t = tv.tv_sec;
    tm local{};
    localtime_r(&t, &local);
    DateParts p{local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
    return JoinDate(p);
}

void Clock::Set(std::optional<double> fixedNow) {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    s.now = fixedNow;
}

} // namespace zolsdk
