#pragma once
// A user locale for the length of a test; the process locale comes back after.
#include "zolsdk/platform/locale.hpp"

namespace zoltest {

class LocaleScope {
public:
    explicit LocaleScope(const char16_t* decimal, const char16_t* thousand = u",", int firstDayOfWeek = 1) {
        zolsdk::UserLocale l;
        l.decimalSeparator = decimal;
        l.thousandSeparator = thousand;
        l.firstDayOfWeek = firstDayOfWeek;
        zolsdk::UserLocale::Set(l);
    }
    ~LocaleScope() { zolsdk::UserLocale::Reset(); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
};

} // namespace zoltest
