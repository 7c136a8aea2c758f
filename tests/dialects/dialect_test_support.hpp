#pragma once
// Shared pieces of the dialect tests: the four builders, a fixed locale and
// clock for every test (restored afterwards), and narrow-text comparison so
// that failures print readably.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "dialects/access_sql_builder.hpp"
#include "dialects/mssql_sql_builder.hpp"
#include "dialects/mysql_sql_builder.hpp"
#include "dialects/xml_sql_builder.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

namespace zolsdk::testing_support {

inline std::string N(const String& s) { return ToUtf8(s); }
inline String W(std::string_view s) { return FromUtf8(s); }

// Every test starts on a point-decimal, Sunday-first locale and a stopped
// clock; whatever a test sets is put back when it ends.
class DialectTest : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = UserLocale::Current();
        UseLocale(u".", u",", 1);
        Clock::Set(JoinDate({2024, 3, 1, 14, 30, 0}));
    }
    void TearDown() override {
        UserLocale::Set(saved_);
        Clock::Set(std::nullopt);
    }
    static void UseLocale(const char16_t* decimal, const char16_t* thousands, int firstDay) {
        UserLocale l;
        l.decimalSeparator = decimal;
        l.thousandSeparator = thousands;
        l.firstDayOfWeek = firstDay;
        UserLocale::Set(l);
    }
    static void SetNow(int y, int mo, int d, int h, int mi, int s) { Clock::Set(JoinDate({y, mo, d, h, mi, s})); }

private:
    UserLocale saved_;
};

} // namespace zolsdk::testing_support
