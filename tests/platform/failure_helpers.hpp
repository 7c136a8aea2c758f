#pragma once
// Helpers for tests that expect a failure of the platform layer.
#include <functional>

#include "zolsdk/platform/error.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk::testing {

// The number of the DbError that `f` raises, 0 when it raises none.
inline int32_t FailureOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        return e.Number();
    }
    return 0;
}

// A user locale for the length of a test; the process locale comes back after.
class LocaleScope {
public:
    explicit LocaleScope(const char16_t* decimal, const char16_t* thousand = u",", int firstDayOfWeek = 1) {
        UserLocale l;
        l.decimalSeparator = decimal;
        l.thousandSeparator = thousand;
        l.firstDayOfWeek = firstDayOfWeek;
        UserLocale::Set(l);
    }
    ~LocaleScope() { UserLocale::Reset(); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
};

} // namespace zolsdk::testing
