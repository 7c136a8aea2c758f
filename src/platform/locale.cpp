#include "zolsdk/platform/locale.hpp"

#include <langinfo.h>
#include <atomic>
#include <clocale>
#include <ctime>
#include <deque>
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

// The locale in force is read for every value that becomes text, so it is
// found without a lock: an atomic pointer to a locale that never changes.
// Set and Reset put a new one in its place; the old ones stay alive (they
// are few), so a reference handed out earlier never dangles.
struct State {
    std::mutex mu;
    std::atomic<const UserLocale*> current{nullptr};
    std::deque<UserLocale> kept;
    std::optional<double> now;
};
State& S() {
    static State s;
    return s;
}
} // namespace

const UserLocale& UserLocale::Current() {
    State& s = S();
    if (const UserLocale* l = s.current.load(std::memory_order_acquire)) return *l;
    std::lock_guard<std::mutex> g(s.mu);
    const UserLocale* l = s.current.load(std::memory_order_relaxed);
    if (!l) {
        l = &s.kept.emplace_back(ReadProcessLocale());
        s.current.store(l, std::memory_order_release);
    }
    return *l;
}

void UserLocale::Set(const UserLocale& l) {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    s.current.store(&s.kept.emplace_back(l), std::memory_order_release);
}

void UserLocale::Reset() {
    State& s = S();
    std::lock_guard<std::mutex> g(s.mu);
    s.current.store(nullptr, std::memory_order_release);
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
