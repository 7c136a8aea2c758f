#pragma once
// Helpers for the platform tests: failures and a fixed user locale.
#include <functional>

#include "common/failure.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk::testing {

using zoltest::FailureNumber;

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
